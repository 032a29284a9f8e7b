// Decoding digits, compared with the scan that it stands for.
#include "events/hexadecimal.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

namespace {

/// What is scanned from exactly two characters.
std::uint8_t scanned(char first, char second)
{
    const char pair[] = {first, second, '\0'};
    unsigned value = 0;
    std::sscanf(pair, "%02x", &value);
    return static_cast<std::uint8_t>(value);
}

std::uint8_t decoded(char first, char second)
{
    const char pair[] = {first, second};
    std::uint8_t byte = 0x5a;
    pvr::decode_hexadecimal(&byte, 1, pair);
    return byte;
}

} // namespace

TEST(Hexadecimal, IsScannedAlikeForEveryPairOfCharacters)
{
    for (int first = 0; first < 256; ++first)
        for (int second = 0; second < 256; ++second)
            ASSERT_EQ(decoded(static_cast<char>(first), static_cast<char>(second)),
                      scanned(static_cast<char>(first), static_cast<char>(second)))
                << first << " " << second;
}

TEST(Hexadecimal, HasItsOwnWayWithPairsThatAreNoNumbers)
{
    const struct {
        const char *pair;
        int byte;
    } cases[] = {{"5g", 0x05}, {"5 ", 0x05}, {"g5", 0x00}, {" 5", 0x05}, {"\t5", 0x05}, {"\v5", 0x05},
                 {"+5", 0x05}, {"-1", 0xff}, {"0x", 0x00}, {"0X", 0x00}, {"  ", 0x00},  {"--", 0x00}};
    for (const auto &[pair, byte] : cases)
        EXPECT_EQ(decoded(pair[0], pair[1]), byte) << pair;
}

TEST(Hexadecimal, FillsAsManyBytesAsAskedFor)
{
    const std::string digits = "00ff7Fa5";
    std::uint8_t bytes[5] = {1, 1, 1, 1, 1};
    pvr::decode_hexadecimal(bytes, 4, digits.data());
    EXPECT_EQ(bytes[0], 0x00);
    EXPECT_EQ(bytes[1], 0xff);
    EXPECT_EQ(bytes[2], 0x7f);
    EXPECT_EQ(bytes[3], 0xa5);
    EXPECT_EQ(bytes[4], 1);
}
