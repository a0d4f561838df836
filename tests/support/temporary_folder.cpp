// tests/support/temporary_folder.cpp
#include "tests/support/temporary_folder.h"

#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

#include "platform/files.h"

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() : former_(fs::current_path()) {
    std::random_device random;
    do {
        path_ = fs::temp_directory_path() / ("tarnwing_" + std::to_string(random()));
    } while (!fs::create_directory(path_));
    fs::current_path(path_);
    platform::setRoamingAppDataFolder(path_ / "roaming");
}

TemporaryFolder::~TemporaryFolder() {
    platform::setRoamingAppDataFolder({});
    fs::current_path(former_);
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

void writeFile(const fs::path& path, std::string_view bytes) {
    if (path.has_parent_path()) {
        fs::create_directories(path.parent_path());
    }
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
