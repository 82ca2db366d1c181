// Where a test may do as it likes: a folder and a process of its own, and what is said there.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

// A folder that goes with all that is in it.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string pattern = testing::TempDir() + "tavo-XXXXXX";
        path = mkdtemp(pattern.data());
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }

    std::filesystem::path path;
};

// What work says on standard error.
inline std::string saidDuring(const std::function<void()> &work)
{
    testing::internal::CaptureStderr();
    work();
    return testing::internal::GetCapturedStderr();
}

// Runs work in a process of its own, whose failures are the test's. Where this user may not begin it, the test is
// skipped.
inline void inChild(const std::function<bool()> &begin, const std::function<void()> &work)
{
    constexpr int notAllowed = 77;
    (void)std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        if (!begin()) {
            _exit(notAllowed);
        }
        work();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    if (WIFEXITED(status) && WEXITSTATUS(status) == notAllowed) {
        GTEST_SKIP() << "this user may not do what the test needs";
    }
    EXPECT_EQ(status, 0);
}

// Root may read and write everything and becomes somebody else, to whom the folder is given.
inline bool becomeNobody(const std::filesystem::path &folder)
{
    constexpr uid_t nobody = 65534;
    return geteuid() != 0 || (chown(folder.c_str(), nobody, nobody) == 0 && setuid(nobody) == 0);
}
