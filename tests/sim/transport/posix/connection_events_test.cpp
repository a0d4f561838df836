#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "sim/simconnect.h"
#include "tests/support/log_capture.h"

namespace {

/// While one lives, the process gets no further descriptor.
class NoDescriptors {
public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &former_);
        const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
        close(next);
        rlimit none = former_;
        none.rlim_cur = static_cast<rlim_t>(next);
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &former_); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit former_{};
};

} // namespace

TEST(ConnectionEvents, withoutThemThereIsNoConnectionAndTheLogSaysWhy) {
    LogCapture log;
    HANDLE client = &log;
    HRESULT result = S_OK;
    {
        const NoDescriptors none;
        result = SimConnect_Open(&client, "Tarnwing", nullptr, 0, nullptr, 0);
    }
    EXPECT_EQ(result, E_FAIL);
    EXPECT_EQ(client, nullptr);
    EXPECT_TRUE(log.contains("==> CreateEvent failed with 24."));
}
