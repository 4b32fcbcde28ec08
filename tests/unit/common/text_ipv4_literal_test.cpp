#include <gtest/gtest.h>

#include <string>

#include "src/common/text.h"

namespace unit {
namespace {

TEST(Ipv4Literal, DigitsAndExactlyThreeDotsAreOne) {
  for (const wchar_t* text :
       {L"192.168.1.1", L"0.0.0.0", L"255.255.255.255", L"999.1.2.3", L"...", L"1...", L"...4",
        L"1.2.3.", L".1.2.3", L"01.002.0003.4", L"123456789012345.0.0.0"}) {
    EXPECT_TRUE(vpn::IsIpv4Literal(text)) << testing::PrintToString(std::wstring(text));
  }
}

TEST(Ipv4Literal, EverythingElseIsNone) {
  for (const wchar_t* text :
       {L"", L".", L"..", L"1.2.3", L"....", L"1.2.3.4.5", L"1234", L"node.example", L"1.2.3.x",
        L" 1.2.3.4", L"1.2.3.4 ", L"1.2.3.4:80", L"1.2.3.-4", L"1.2.3.4/32", L"::ffff:1.2.3.4",
        L"１.2.3.4", L"1。2。3。4", L"a.b.c.d"}) {
    EXPECT_FALSE(vpn::IsIpv4Literal(text)) << testing::PrintToString(std::wstring(text));
  }
  EXPECT_FALSE(vpn::IsIpv4Literal(std::wstring(L"1.2.3.4\0", 8))) << "a NUL is no digit";
}

}  // namespace
}  // namespace unit
