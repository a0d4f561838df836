// tests/platform/posix/socket_codes_test.cpp
#include "platform/posix/socket_codes.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <utility>
#include <vector>

using platform::windowsCode;

TEST(SocketCodes, eachErrorOfThisSystemHasItsWindowsCode) {
    const std::vector<std::pair<int, int>> codes{
        {EINTR, 10004},         {EBADF, 10009},        {EACCES, 10013},          {EFAULT, 10014},
        {EINVAL, 10022},        {EMFILE, 10024},       {EWOULDBLOCK, 10035},     {EINPROGRESS, 10036},
        {EALREADY, 10037},      {ENOTSOCK, 10038},     {EDESTADDRREQ, 10039},    {EMSGSIZE, 10040},
        {EPROTOTYPE, 10041},    {ENOPROTOOPT, 10042},  {EPROTONOSUPPORT, 10043}, {ESOCKTNOSUPPORT, 10044},
        {EOPNOTSUPP, 10045},    {EPFNOSUPPORT, 10046}, {EAFNOSUPPORT, 10047},    {EADDRINUSE, 10048},
        {EADDRNOTAVAIL, 10049}, {ENETDOWN, 10050},     {ENETUNREACH, 10051},     {ENETRESET, 10052},
        {ECONNABORTED, 10053},  {ECONNRESET, 10054},   {ENOBUFS, 10055},         {EISCONN, 10056},
        {ENOTCONN, 10057},      {ESHUTDOWN, 10058},    {ETOOMANYREFS, 10059},    {ETIMEDOUT, 10060},
        {ECONNREFUSED, 10061},  {ELOOP, 10062},        {ENAMETOOLONG, 10063},    {EHOSTDOWN, 10064},
        {EHOSTUNREACH, 10065},  {ENOTEMPTY, 10066},    {EUSERS, 10068},          {EDQUOT, 10069},
        {ESTALE, 10070},        {EREMOTE, 10071},
    };
    for (const auto& [native, windows] : codes) {
        EXPECT_EQ(windowsCode(native), windows) << native;
    }
}

TEST(SocketCodes, whatWindowsHasNoNumberForGetsTheNearestOne) {
    EXPECT_EQ(windowsCode(EPERM), 10013);
    EXPECT_EQ(windowsCode(ENFILE), 10024);
    EXPECT_EQ(windowsCode(EPIPE), 10053);
    EXPECT_EQ(windowsCode(ENOMEM), 10055);
}

TEST(SocketCodes, anyOtherErrorKeepsItsNumber) {
    EXPECT_EQ(windowsCode(ENOENT), ENOENT);
    EXPECT_EQ(windowsCode(0), 0);
    EXPECT_EQ(windowsCode(-1), -1);
}
