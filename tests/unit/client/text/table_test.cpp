#include "client/text/table.h"

#include <gtest/gtest.h>

namespace vpn {
namespace {

TEST(Table, LinesUpWithChineseNames) {
  Table table({{L"Node"}, {L"Address"}, {L"Port", Table::Align::kRight}});
  table.addRow({L"Tokyo 01", L"203.0.113.77", L"443"});
  table.addRow({L"香港 BGP 02", L"hk2.node.example", L"8443"});
  EXPECT_EQ(table.lines(), (std::vector<std::wstring>{
                               L"Node          Address            Port",
                               L"Tokyo 01      203.0.113.77        443",
                               L"香港 BGP 02   hk2.node.example   8443",
                           }));
}

TEST(Table, WhatStandsBehindTheColumnsIsARemark) {
  Table table({{L"Node"}, {L"Latency", Table::Align::kRight}});
  table.addRow({L"大阪 7", L"–", L"no answer in 2 s"});
  table.addRow({L"Tokyo 01"});
  EXPECT_EQ(table.lines(), (std::vector<std::wstring>{
                               L"Node       Latency",
                               L"大阪 7           –   no answer in 2 s",
                               L"Tokyo 01",
                           }));
}

}  // namespace
}  // namespace vpn
