// tests/platform/posix/runtime_folder.cpp
// The locks and sockets that stand for named objects lie in a folder that goes with the test program.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

namespace fs = std::filesystem;

namespace {

class RuntimeFolder : public testing::Environment {
public:
    void SetUp() override {
        path_ = fs::temp_directory_path() / ("tarnwing_runtime_" + std::to_string(std::random_device()()));
        fs::create_directory(path_);
        setenv("XDG_RUNTIME_DIR", path_.c_str(), 1);
    }
    void TearDown() override {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }

private:
    fs::path path_;
};

[[maybe_unused]] const testing::Environment* const runtimeFolder = testing::AddGlobalTestEnvironment(new RuntimeFolder);

} // namespace
