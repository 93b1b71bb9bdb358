# Helpers shared by every subsystem, test and benchmark.

# mirl_add_test(<name> SOURCES <files...> LIBS <targets...> [LABELS <labels...>] [TIMEOUT <s>])
# One Qt Test executable registered with CTest. Every test gets a private HOME and XDG folders so
# that nothing a test writes can touch the user's files or another test's.
function(mirl_add_test name)
  cmake_parse_arguments(T "" "TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE Qt6::Test ${T_LIBS})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  add_test(NAME ${name} COMMAND ${name})
  set(home ${CMAKE_CURRENT_BINARY_DIR}/home/${name})
  if(NOT T_LABELS)
    set(T_LABELS unit)
  endif()
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 120)
  endif()
  set_tests_properties(${name} PROPERTIES
    LABELS "${T_LABELS}"
    TIMEOUT ${T_TIMEOUT}
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;HOME=${home};XDG_CONFIG_HOME=${home}/config;XDG_CACHE_HOME=${home}/cache;XDG_DATA_HOME=${home}/data;XDG_STATE_HOME=${home}/state;MIRL_TEST_DATA=${PROJECT_SOURCE_DIR}/tests/data;MIRL_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
endfunction()

# mirl_add_bench(<name> SOURCES <files...> LIBS <targets...>)
function(mirl_add_bench name)
  cmake_parse_arguments(B "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${B_SOURCES})
  target_link_libraries(${name} PRIVATE ${B_LIBS})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/benchmarks)
  set_property(GLOBAL APPEND PROPERTY MIRL_BENCHES ${name})
endfunction()
