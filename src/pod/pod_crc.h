#pragma once

#include <QtGlobal>

#include <cstddef>
#include <cstdint>

namespace korvel {

// The checksum of POD2 archives: CRC-32 with the polynomial 0x04C11DB7, bits not reflected, no final
// XOR. The header field holds it over every byte from offset 8 to the end of the file (register
// started at 0xFFFFFFFF), each directory record over its entry's data.
inline constexpr std::uint32_t kPodCrcInit = 0xFFFFFFFFu;

// Feeds `length` bytes into the register `crc` and returns the new register.
std::uint32_t podCrcUpdate(std::uint32_t crc, const void* data, size_t length);

// The register after `zeroBytes` further zero bytes: with it the register over A followed by B is
// podCrcShift(register over A, |B|) XOR (register over B started at 0).
std::uint32_t podCrcShift(std::uint32_t crc, qint64 zeroBytes);

inline std::uint32_t podCrc(const void* data, size_t length) {
    return podCrcUpdate(kPodCrcInit, data, length);
}

} // namespace korvel
