#include "bench/core/Sha256.h"

#include <array>
#include <cstdint>

namespace bench {

namespace {

constexpr std::size_t BlockSize = 64;

// The first 32 bits of the fractional parts of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, 64> RoundConstants = {0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5,
    0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5, 0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3,
    0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174, 0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc,
    0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da, 0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7,
    0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967, 0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13,
    0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85, 0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3,
    0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070, 0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5,
    0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3, 0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208,
    0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t rotated(std::uint32_t word, unsigned bits)
{
    return word >> bits | word << (32 - bits);
}

std::uint32_t bigEndianWord(const char *bytes)
{
    std::uint32_t word = 0;
    for (int i = 0; i < 4; ++i) {
        word = word << 8 | static_cast<unsigned char>(bytes[i]);
    }
    return word;
}

void addBlock(std::array<std::uint32_t, 8> *state, const char *block)
{
    std::array<std::uint32_t, 64> schedule;
    for (std::size_t i = 0; i < 16; ++i) {
        schedule[i] = bigEndianWord(block + 4 * i);
    }
    for (std::size_t i = 16; i < 64; ++i) {
        const std::uint32_t early = schedule[i - 15];
        const std::uint32_t late = schedule[i - 2];
        schedule[i] = schedule[i - 16] + (rotated(early, 7) ^ rotated(early, 18) ^ early >> 3)
            + schedule[i - 7] + (rotated(late, 17) ^ rotated(late, 19) ^ late >> 10);
    }
    auto [a, b, c, d, e, f, g, h] = *state;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::uint32_t first = h + (rotated(e, 6) ^ rotated(e, 11) ^ rotated(e, 25))
            + ((e & f) ^ (~e & g)) + RoundConstants[i] + schedule[i];
        const std::uint32_t second =
            (rotated(a, 2) ^ rotated(a, 13) ^ rotated(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const std::array<std::uint32_t, 8> mixed = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < mixed.size(); ++i) {
        (*state)[i] += mixed[i];
    }
}

} // namespace

std::string sha256(const std::string &bytes)
{
    std::array<std::uint32_t, 8> state = {
        0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    const std::size_t whole = bytes.size() / BlockSize * BlockSize;
    for (std::size_t offset = 0; offset < whole; offset += BlockSize) {
        addBlock(&state, bytes.data() + offset);
    }
    // A bit 1, then zeros, then the length in bits, at the end of a block.
    std::string tail = bytes.substr(whole) + '\x80';
    tail.resize(tail.size() + (2 * BlockSize - 8 - tail.size()) % BlockSize, '\0');
    for (int shift = 56; shift >= 0; shift -= 8) {
        tail += static_cast<char>(static_cast<std::uint64_t>(bytes.size()) * 8 >> shift);
    }
    for (std::size_t offset = 0; offset < tail.size(); offset += BlockSize) {
        addBlock(&state, tail.data() + offset);
    }
    std::string digest;
    for (const std::uint32_t word : state) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            digest += static_cast<char>(word >> shift);
        }
    }
    return digest;
}

} // namespace bench
