#include "tests/platform/hid/fakeHidapi.h"

#include <hidapi/hidapi.h>

#include <utility>

struct hid_device_ {};

namespace vrk::hid {
FakeHidapi fakeHidapi;
}

using vrk::hid::fakeHidapi;

int hid_init() {
    return 0;
}

hid_device_info* hid_enumerate(unsigned short, unsigned short) {
    hid_device_info* first = nullptr;
    for (auto path = fakeHidapi.listed.rbegin(); path != fakeHidapi.listed.rend(); ++path) {
        auto* info = new hid_device_info{};
        info->path = path->data();
        info->vendor_id = 0xF5C3;
        info->product_id = 0x2034;
        info->next = first;
        first = info;
    }
    return first;
}

void hid_free_enumeration(hid_device_info* info) {
    while (info)
        delete std::exchange(info, info->next);
}

hid_device* hid_open_path(const char*) {
    ++fakeHidapi.openCalls;
    if (!fakeHidapi.opens.empty()) {
        const bool good = fakeHidapi.opens.front();
        fakeHidapi.opens.pop_front();
        if (!good)
            return nullptr;
    }
    ++fakeHidapi.openDevices;
    return new hid_device_;
}

void hid_close(hid_device* device) {
    --fakeHidapi.openDevices;
    delete device;
}

int hid_write(hid_device*, const unsigned char*, std::size_t length) {
    return fakeHidapi.write(length);
}

int hid_read_timeout(hid_device*, unsigned char* data, std::size_t, int wait) {
    const int count = fakeHidapi.read(wait);
    for (int i = 0; i < count; ++i)
        data[i] = static_cast<unsigned char>(i);
    return count;
}

const wchar_t* hid_error(hid_device*) {
    return fakeHidapi.error.c_str();
}
