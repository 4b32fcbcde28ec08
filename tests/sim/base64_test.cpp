#include "tests/sim/base64.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/sim/fixture.h"

#include <windows.h>
#include <wincrypt.h>

namespace sim {
namespace {

std::string Decoded(std::string_view text) {
  std::string bytes;
  return DecodeBase64(text, &bytes) ? bytes : "refused";
}

TEST(Base64, ReadsWholeGroupsAndPaddedOnes) {
  EXPECT_EQ(Decoded(""), "");
  EXPECT_EQ(Decoded("QUJD"), "ABC");
  EXPECT_EQ(Decoded("QUJDREVG"), "ABCDEF");
  EXPECT_EQ(Decoded("QUI="), "AB");
  EXPECT_EQ(Decoded("QQ=="), "A");
  EXPECT_EQ(Decoded("+/+/"), "\xFB\xFF\xBF");
}

TEST(Base64, WhiteSpaceCountsForNothing) {
  EXPECT_EQ(Decoded(" \tQU\r\nJD\n"), "ABC");
  EXPECT_EQ(Decoded("QQ=\n="), "A");
  EXPECT_EQ(Decoded("\n"), "");
}

TEST(Base64, PaddingMayBeMissingOrTooLongButNotTooShort) {
  EXPECT_EQ(Decoded("QQ"), "A");
  EXPECT_EQ(Decoded("QUI"), "AB");
  EXPECT_EQ(Decoded("Q"), "@");
  EXPECT_EQ(Decoded("Q==="), "@");
  EXPECT_EQ(Decoded("QUJDQQ"), "ABCA");
  EXPECT_EQ(Decoded("QUJD===="), "ABC");
  EXPECT_EQ(Decoded("="), "");
  for (const char* text : {"QQ=", "Q=", "Q==", "QUJDQQ=", "QU=JD", "Q==Q"}) {
    EXPECT_EQ(Decoded(text), "refused") << text;
  }
}

TEST(Base64, WhatFollowsThePaddingIsIgnored) {
  EXPECT_EQ(Decoded("QQ==QUJD"), "A");
  EXPECT_EQ(Decoded("QUI=*"), "AB");
  EXPECT_EQ(Decoded("=QUJD"), "");
}

TEST(Base64, EveryOtherByteIsRefused) {
  for (const std::string& text : std::vector<std::string>{
           "QUJD*", "QUJD-_", "QUJD\v", "QUJD\f", "QUJD\xC3\xA9", std::string("QUJD\0", 5)}) {
    EXPECT_EQ(Decoded(text), "refused") << text;
  }
}

class CryptString : public MachineTest {};

TEST_F(CryptString, GivesTheSizeAndThenTheBytes) {
  DWORD size = 0;
  EXPECT_TRUE(
      CryptStringToBinaryA("QUI=", 4, CRYPT_STRING_BASE64, nullptr, &size, nullptr, nullptr));
  EXPECT_EQ(size, 2u);
  BYTE bytes[2] = {};
  EXPECT_TRUE(CryptStringToBinaryA("QUI=", 4, CRYPT_STRING_BASE64, bytes, &size, nullptr, nullptr));
  EXPECT_EQ(std::string(bytes, bytes + 2), "AB");
  size = 1;
  EXPECT_FALSE(
      CryptStringToBinaryA("QUI=", 4, CRYPT_STRING_BASE64, bytes, &size, nullptr, nullptr));
  EXPECT_EQ(GetLastError(), 234u);
  EXPECT_EQ(size, 2u);
}

TEST_F(CryptString, ALengthOfZeroMeansUpToTheNul) {
  DWORD size = 0;
  EXPECT_TRUE(
      CryptStringToBinaryA("QUJD", 0, CRYPT_STRING_BASE64, nullptr, &size, nullptr, nullptr));
  EXPECT_EQ(size, 3u);
}

TEST_F(CryptString, BadDataIsRefused) {
  DWORD size = 0;
  EXPECT_FALSE(CryptStringToBinaryA("*", 1, CRYPT_STRING_BASE64, nullptr, &size, nullptr, nullptr));
  EXPECT_EQ(GetLastError(), 13u);
}

}  // namespace
}  // namespace sim
