#include "client/advice/advice.h"

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "src/common/text.h"
#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class AdviceTest : public unit::ClientTest {};

std::string ReadSource(const std::string& name) {
  std::ifstream file(std::string(TAVRIN_SOURCE_DIR) + "/" + name);
  EXPECT_TRUE(file) << name;
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

std::string Without(std::string text, const std::string& characters) {
  std::erase_if(text, [&](char c) { return characters.find(c) != std::string::npos; });
  return text;
}

// The section behind a heading, up to the next one of its depth.
std::string Section(const std::string& document, const std::string& heading) {
  const size_t start = document.find("\n## " + heading + "\n");
  EXPECT_NE(start, std::string::npos) << heading;
  return document.substr(start + 1, document.find("\n## ", start + 4) - start - 1);
}

std::vector<std::string> TextsIn(const std::string& cell) {
  std::vector<std::string> texts;
  static const std::regex kText("`([^`]*)`");
  for (std::sregex_iterator at(cell.begin(), cell.end(), kText), end; at != end; ++at) {
    texts.push_back((*at)[1]);
  }
  return texts;
}

// "text => advice" for every text of a table with two columns; the advice is the first sentence of
// the second.
std::set<std::string> RowsOf(const std::string& section) {
  std::set<std::string> rows;
  std::istringstream lines(section);
  static const std::regex kRow(R"(\| (`.*`) \| (.*) \|)");
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (std::regex_match(line, match, kRow)) {
      for (const std::string& text : TextsIn(match[1])) {
        const std::string cell = Without(match[2], "`*");
        rows.insert(text + " => " + cell.substr(0, cell.find(". ")));
      }
    }
  }
  return rows;
}

TEST_F(AdviceTest, TheTableOfTheDocumentIsTheTableOfTheCode) {
  std::set<std::string> code;
  for (const Advice& entry : AllAdvice()) {
    code.insert(Without(WideToUtf8(entry.pattern), "{}") + " => " +
                Without(WideToUtf8(entry.whatToDo), "{}"));
  }
  const std::string section =
      Section(ReadSource("docs/operations.md"), "What the user is told, and what to do");
  EXPECT_EQ(RowsOf(section.substr(0, section.find("\n### "))), code);
}

TEST_F(AdviceTest, EveryTextOfTheProtocolHasAnEntry) {
  const std::string section = Section(ReadSource("docs/control-protocol.md"), "Every error text");
  size_t count = 0;
  std::istringstream lines(section);
  static const std::regex kRow(R"(\| (`.*`) \| (.*) \|)");
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (!std::regex_match(line, match, kRow)) {
      continue;
    }
    for (const std::string& text : TextsIn(match[1])) {
      FoundAdvice found;
      EXPECT_TRUE(FindAdvice(Utf8ToWide(text), found)) << text;
      ++count;
    }
  }
  EXPECT_GE(count, 49u);
}

// Texts that are no messages: labels of prices and the words between them.
bool IsNoMessage(const std::string& file) {
  return file.find("plan_options") != std::string::npos ||
         file.find("service_install") != std::string::npos;
}

// What the program looks for in a panel's texts, and what stands for a proxy without a name.
const std::set<std::string> kWords = {"开通中",   "将其取消", "已存在", "剩余流量",
                                      "套餐到期", "距离下次", "过滤掉", "未知",
                                      "未支付",   "待支付",   "未完成"};

TEST_F(AdviceTest, EveryChineseTextOfTheSourcesIsPartOfAnEntry) {
  std::string known;
  for (const Advice& entry : AllAdvice()) {
    known += WideToUtf8(entry.pattern) + "\n";
  }
  static const std::regex kLiteral("\"([^\"\\n]*[\xE4-\xE9][^\"\\n]*)\"");
  size_t count = 0;
  for (const auto& file :
       std::filesystem::recursive_directory_iterator(std::string(TAVRIN_SOURCE_DIR) + "/src")) {
    const std::string name = file.path().string();
    if (!name.ends_with(".cpp") || IsNoMessage(name)) {
      continue;
    }
    std::string text = ReadSource(name.substr(std::string(TAVRIN_SOURCE_DIR).size() + 1));
    text = std::regex_replace(text, std::regex("//[^\n]*"), "");
    for (std::sregex_iterator at(text.begin(), text.end(), kLiteral), end; at != end; ++at) {
      std::string literal = (*at)[1];
      literal.erase(0, literal.find_first_not_of(' '));
      EXPECT_TRUE(kWords.contains(literal) || known.find(literal) != std::string::npos)
          << name << ": " << literal;
      ++count;
    }
  }
  EXPECT_GT(count, 40u);
}

TEST_F(AdviceTest, ValuesAreCarriedOver) {
  FoundAdvice found;
  ASSERT_TRUE(
      FindAdvice(L"检测到其他 VPN 正在使用网络（Mein VPN）。请先退出 v2rayN / Clash 等客户端的 TUN "
                 L"模式，再连接。",
                 found));
  EXPECT_EQ(found.whatToDo, L"end the other VPN, or disable the adapter Mein VPN");
  EXPECT_EQ(found.place, FailurePlace::kChecks);
}

TEST_F(AdviceTest, APatternWithSeveralValuesMatches) {
  EXPECT_EQ(WhatToDo(L"CreateIpForwardEntry2 failed 5 for 203.0.113.77"),
            L"for the number 5 run the service with administrator's rights; else another program "
            L"holds the route, see route print");
}

TEST_F(AdviceTest, AValueIsNeverEmpty) {
  FoundAdvice found;
  EXPECT_FALSE(FindAdvice(L"cannot read ", found));
  EXPECT_FALSE(FindAdvice(L"CreateProcess failed err=", found));
  EXPECT_FALSE(FindAdvice(L"CreateProcess", found));
  EXPECT_FALSE(FindAdvice(L"", found));
}

TEST_F(AdviceTest, TheStepInBracketsBehindATextDoesNotHideIt) {
  EXPECT_EQ(WhatToDo(L"面板 HTTP 503（结算 503）"), WhatToDo(L"面板 HTTP 503"));
  EXPECT_EQ(WhatToDo(L"请求失败（下单）"),
            L"look at the log of the panel or of the device service");
}

TEST_F(AdviceTest, AnyOtherTextIsThePanelsOwn) {
  EXPECT_EQ(WhatToDo(L"账户已被停用"),
            L"this is the panel's own text: do as it says, or ask whoever runs the panel");
}

}  // namespace
}  // namespace vpn
