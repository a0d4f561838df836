// rig/report/no_pictures.cpp
// In the place of pictures.cpp where there is no library to draw with.
#include "rig/report/pictures.h"

namespace rig {

std::vector<std::filesystem::path> drawPictures(const Analysis& /*analysis*/, const std::filesystem::path& /*folder*/) {
    return {};
}

} // namespace rig
