#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

/// What the stand-in for the HID library answers.
namespace vrk::hid {

struct FakeHidapi {
    std::vector<std::string> listed;   ///< all with vendor 0xF5C3, product 0x2034
    std::deque<bool> opens;            ///< good or refused; good when empty
    std::function<int(int wait)> read; ///< as the library's: bytes, 0, or -1 with `error` and errno
    std::function<int(std::size_t)> write;
    std::wstring error;
    int openCalls = 0;
    int openDevices = 0;
};

extern FakeHidapi fakeHidapi;

} // namespace vrk::hid
