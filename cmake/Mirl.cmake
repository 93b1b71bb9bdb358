# Helpers shared by every subsystem, test and benchmark.

# mirl_add_subfolders(): adds every folder below the current one that has a CMakeLists.txt, in
# name order, so that a new subsystem, seam or benchmark needs no edit elsewhere.
function(mirl_add_subfolders)
  file(GLOB dirs LIST_DIRECTORIES true ${CMAKE_CURRENT_SOURCE_DIR}/*)
  list(SORT dirs)
  foreach(dir IN LISTS dirs)
    if(IS_DIRECTORY ${dir} AND EXISTS ${dir}/CMakeLists.txt)
      add_subdirectory(${dir})
    endif()
  endforeach()
endfunction()

# mirl_add_test(<name> SOURCES <files...> LIBS <targets...> [LABELS <labels...>] [TIMEOUT <s>])
# One Qt Test executable registered with CTest. Every test gets a private HOME and XDG folders so
# that nothing a test writes can touch the user's files or another test's; run by hand, the
# binary makes its own (tests/support/PrivateHome.cpp).
function(mirl_add_test name)
  cmake_parse_arguments(T "" "TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE Qt6::Test mirl_test_home ${T_LIBS})
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
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;MIRL_TEST_HOME=${home};HOME=${home};XDG_CONFIG_HOME=${home}/config;XDG_CACHE_HOME=${home}/cache;XDG_DATA_HOME=${home}/data;XDG_STATE_HOME=${home}/state;MIRL_TEST_DATA=${PROJECT_SOURCE_DIR}/tests/data;MIRL_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
endfunction()

# mirl_add_bench(<name> SOURCES <files...> LIBS <targets...>)
function(mirl_add_bench name)
  cmake_parse_arguments(B "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${B_SOURCES})
  target_link_libraries(${name} PRIVATE ${B_LIBS})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/benchmarks)
  set_property(GLOBAL APPEND PROPERTY MIRL_BENCHES ${name})
endfunction()

# mirl_use_test_env(<test>...)
# Runs the tests inside the private environment of scripts/test-env (own session bus, PipeWire
# with a null sink, mpv playing generated tracks). CTest brings it up once before the first such
# test and down after the last; the tests share its one player, so they never run at once. A test
# finds the variables to export in the file named by MIRL_TEST_ENV_FILE (tests/support/TestEnv.h).
set(MIRL_TEST_ENV_FILE ${PROJECT_BINARY_DIR}/test-env.sh)
function(mirl_use_test_env)
  foreach(test IN LISTS ARGN)
    set_property(TEST ${test} APPEND PROPERTY FIXTURES_REQUIRED mirl_test_env)
    set_property(TEST ${test} APPEND PROPERTY RESOURCE_LOCK mirl_test_env)
    set_property(TEST ${test} APPEND PROPERTY ENVIRONMENT "MIRL_TEST_ENV_FILE=${MIRL_TEST_ENV_FILE}")
  endforeach()
endfunction()
