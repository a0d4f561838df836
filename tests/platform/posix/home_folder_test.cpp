// tests/platform/posix/home_folder_test.cpp
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "platform/files.h"

namespace {

/// An environment variable is as it was when this goes.
class Unset {
public:
    explicit Unset(const char* name) : name_(name) {
        if (const char* value = std::getenv(name)) {
            value_ = value;
            was_ = true;
        }
        unsetenv(name);
    }
    ~Unset() {
        if (was_) {
            setenv(name_, value_.c_str(), 1);
        }
    }
    Unset(const Unset&) = delete;
    Unset& operator=(const Unset&) = delete;

private:
    const char* name_;
    std::string value_;
    bool was_ = false;
};

TEST(HomeFolder, withoutOneTheUsersFoldersAreNotKnown) {
    const Unset home("HOME");
    const Unset config("XDG_CONFIG_HOME");
    EXPECT_EQ(platform::roamingAppDataFolder(), std::filesystem::path());
    EXPECT_EQ(platform::documentsFolder(), std::filesystem::path());
    EXPECT_EQ(platform::publicDocumentsFolder(), std::filesystem::path());
}

} // namespace
