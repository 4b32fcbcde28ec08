#include <gtest/gtest.h>

#include <string>

#include "src/net/adapters.h"

namespace unit {
namespace {

TEST(VirtualAlias, EachWordHitsAnywhereAndInAnyCase) {
  for (const wchar_t* alias :
       {L"VMware Network Adapter VMnet8", L"vmware", L"Loopback Pseudo-Interface 1", L"LOOPBACK",
        L"wintun", L"My WinTun 2", L"xray", L"XRAY0", L"VirtualBox Host-Only Network",
        L"a virtualbox b", L"Hyper-V", L"on hyper-v switch", L"vEthernet (WSL)", L"VETHERNET"}) {
    EXPECT_TRUE(vpn::IsVirtualInterfaceAlias(alias)) << testing::PrintToString(std::wstring(alias));
  }
}

TEST(VirtualAlias, WhatHoldsNoneOfTheWordsIsPhysical) {
  for (const wchar_t* alias :
       {L"", L"以太网", L"Ethernet 2", L"Wi-Fi", L"tavrin", L"VMwar", L"Loop back", L"win tun",
        L"x-ray", L"Virtual Box", L"HyperV", L"Ethernet (WSL)", L"WireGuard", L"本地连接* 3"}) {
    EXPECT_FALSE(vpn::IsVirtualInterfaceAlias(alias))
        << testing::PrintToString(std::wstring(alias));
  }
}

}  // namespace
}  // namespace unit
