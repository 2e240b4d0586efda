#include "pod_crc.h"

#include <array>

namespace korvel {

namespace {

constexpr std::uint32_t kPoly = 0x04C11DB7u;

// Eight tables: table k advances a byte through k further zero bytes, so eight input bytes are
// folded in per step.
struct Tables {
    std::array<std::array<std::uint32_t, 256>, 8> t{};
    constexpr Tables() {
        for (std::uint32_t i = 0; i < 256; ++i) {
            std::uint32_t r = i << 24;
            for (int bit = 0; bit < 8; ++bit)
                r = (r & 0x80000000u) ? (r << 1) ^ kPoly : r << 1;
            t[0][i] = r;
        }
        for (size_t k = 1; k < 8; ++k)
            for (size_t i = 0; i < 256; ++i)
                t[k][i] = (t[k - 1][i] << 8) ^ t[0][t[k - 1][i] >> 24];
    }
};

constexpr Tables kTables;

std::uint32_t word(const unsigned char* p) {
    return (std::uint32_t(p[0]) << 24) | (std::uint32_t(p[1]) << 16) | (std::uint32_t(p[2]) << 8) | p[3];
}

// a * b modulo the polynomial, both as polynomials over GF(2) of degree below 32.
std::uint32_t multiply(std::uint32_t a, std::uint32_t b) {
    std::uint32_t r = 0;
    for (int i = 31; i >= 0; --i) {
        r = (r & 0x80000000u) ? (r << 1) ^ kPoly : r << 1;
        if ((b >> i) & 1u)
            r ^= a;
    }
    return r;
}

} // namespace

std::uint32_t podCrcUpdate(std::uint32_t crc, const void* data, size_t length) {
    const auto* p = static_cast<const unsigned char*>(data);
    const auto& t = kTables.t;
    while (length >= 8) {
        const std::uint32_t a = crc ^ word(p);
        const std::uint32_t b = word(p + 4);
        crc = t[7][a >> 24] ^ t[6][(a >> 16) & 0xFF] ^ t[5][(a >> 8) & 0xFF] ^ t[4][a & 0xFF] ^ t[3][b >> 24] ^
              t[2][(b >> 16) & 0xFF] ^ t[1][(b >> 8) & 0xFF] ^ t[0][b & 0xFF];
        p += 8;
        length -= 8;
    }
    while (length-- > 0)
        crc = (crc << 8) ^ t[0][(crc >> 24) ^ *p++];
    return crc;
}

std::uint32_t podCrcShift(std::uint32_t crc, qint64 zeroBytes) {
    // crc * x^(8 * zeroBytes), by squaring: `power` runs through x^8, x^16, x^32, ...
    std::uint32_t power = 0x100u;
    for (quint64 n = static_cast<quint64>(zeroBytes); n != 0; n >>= 1) {
        if (n & 1u)
            crc = multiply(crc, power);
        power = multiply(power, power);
    }
    return crc;
}

} // namespace korvel
