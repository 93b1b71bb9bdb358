// Every test binary runs with a private HOME and private XDG folders, so that nothing a test
// writes or deletes can touch the developer's own files. CTest names them (MIRL_TEST_HOME is
// the folder); a binary run by hand makes a fresh one under the temporary folder before main()
// runs, and removes it when it ends.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

namespace {

struct PrivateHome {
    std::string made;

    PrivateHome() {
        if (std::getenv("MIRL_TEST_HOME"))
            return;
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/mirl-test-home-XXXXXX";
        if (!::mkdtemp(pattern.data())) {
            std::perror("mirl test: no private home folder");
            std::abort();
        }
        made = pattern;
        ::setenv("HOME", made.c_str(), 1);
        const std::pair<const char*, const char*> folders[] = {{"XDG_CONFIG_HOME", "/config"},
                                                               {"XDG_CACHE_HOME", "/cache"},
                                                               {"XDG_DATA_HOME", "/data"},
                                                               {"XDG_STATE_HOME", "/state"}};
        for (const auto& [name, sub] : folders)
            ::setenv(name, (made + sub).c_str(), 1);
        ::setenv("MIRL_TEST_HOME", made.c_str(), 1);
    }
    ~PrivateHome() {
        if (!made.empty()) {
            std::error_code ignored;
            std::filesystem::remove_all(made, ignored);
        }
    }
} privateHome;

} // namespace
