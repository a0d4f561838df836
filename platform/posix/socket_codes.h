// platform/posix/socket_codes.h
// Socket errors of this system as codes of the Windows socket library. Function without state: usable from any thread.
#pragma once

namespace platform {

/// The Windows code for a value of errno; a value that has none there comes back as it is.
int windowsCode(int code);

} // namespace platform
