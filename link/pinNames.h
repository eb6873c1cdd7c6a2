#pragma once

#include <array>

namespace vrk {

/// Captions of the 24 motherboard pins, P0.0 to P2.7. The slashes separate what one pin means to the
/// different kinds of device in the socket. One table for the motherboard console and the controller console.
inline constexpr std::array<const char*, 24> kPinCaptions = {
    "P0.0 N103 NO SCLK",
    "P0.1 N102 NO MISO",
    "P0.2 N101 NO MOSI",
    "P0.3 N100 NO CSEL",
    "P0.4 I2C SDA",
    "P0.5 I2C SCL",
    "P0.6 N100 NC /A0/  /CS1/  /",
    "P0.7 N101 NC/ A1/  /CS2/ STORE",
    "P1.0 N102 NC  /A2/  /  /MUTE",
    "P1.1 N103 NC /A3/  /INC/UP",
    "P1.2 JP6-P7 SHDNPWP/UD/DN",
    "P1.3 Mother Board Switch",
    "P1.4 NC",
    "P1.5 NC",
    "P1.6 VIN0",
    "P1.7 VIN1",
    "P2.0 VIN2",
    "P2.1 VIN3",
    "P2.2 VIN4 VCC",
    "P2.3 JP8-P5",
    "P2.4 VRK CS U5",
    "P2.5 /SHDN V+",
    "P2.6 /SHDN V-",
    "P2.7 LED",
};

} // namespace vrk
