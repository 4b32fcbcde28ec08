// The generated configuration: whatever the node holds, it is the fixed template with the node's
// values in their places. The input is a line for each value.
#include "src/xrayconf/xray_config.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <nlohmann/json.hpp>

#include "tests/fuzz/fuzz.h"

using fuzz::Require;

namespace {

using Values = std::map<std::string, std::string>;  // by marker, in UTF-8 and not escaped

constexpr wchar_t kNowhere[] = L"C:\\no\\such\\x.json";

struct Input {
  vpn::NodeInfo node;
  std::wstring alias;
  std::wstring path;
};

Input ReadInput(std::string_view text) {
  Input input;
  const std::string port(fuzz::TakeUntil(text, '\n'));
  input.node.port = static_cast<std::int32_t>(std::strtoll(port.c_str(), nullptr, 10));
  for (std::wstring* field :
       {&input.node.address, &input.node.uuid, &input.node.flow, &input.node.sni,
        &input.node.fingerprint, &input.node.publicKey, &input.node.shortId, &input.alias}) {
    *field = fuzz::Wide(fuzz::TakeUntil(text, '\n'));
  }
  constexpr std::array<const wchar_t*, 4> kPaths = {L"C:\\run\\session.json.xray.json",
                                                    L"C:/run/x.json", L"x.json", kNowhere};
  input.path = kPaths[text.size() % kPaths.size()];
  return input;
}

// A JSON string but for control bytes, which pass as they are.
std::string Quoted(const std::string& value) {
  std::string quoted = "\"";
  for (const char byte : value) {
    quoted += byte == '"' || byte == '\\' ? "\\" : "";
    quoted += byte;
  }
  return quoted + '"';
}

// A strict parser refuses raw control bytes. Within strings, and only there, they are escaped here,
// so that a value that breaks out of its quotes is noticed.
std::string EscapeControlBytes(const std::string& text) {
  std::string escaped;
  escaped.reserve(text.size() * 2);
  bool quoted = false;
  for (size_t at = 0; at < text.size(); ++at) {
    const char byte = text[at];
    if (quoted && byte == '\\') {
      escaped += byte;
      escaped += text[++at];
    } else if (quoted && static_cast<unsigned char>(byte) < 0x20) {
      std::array<char, 8> unit{};
      std::snprintf(unit.data(), unit.size(), "\\u%04x", static_cast<unsigned>(byte));
      escaped += unit.data();
    } else {
      quoted = byte == '"' ? !quoted : quoted;
      escaped += byte;
    }
  }
  return escaped;
}

// Empty when there is no directory for the file.
std::string Generate(sim::Machine& machine, const Input& input) {
  const vpn::Status status = vpn::GenerateXrayConfig(input.node, input.alias, input.path);
  const bool good = static_cast<bool>(status);
  Require(good == (input.path != kNowhere), "only a file that can't be opened is a failure");
  Require(good == status.text().empty(), "a failure has a text");
  return good ? machine.files.Read(input.path).value_or("") : "";
}

bool IsLiteral(const std::string& address) {
  const bool dotted = address.find_first_not_of("0123456789.") == std::string::npos &&
                      std::count(address.begin(), address.end(), '.') == 3;
  return dotted || address.find(':') != std::string::npos;
}

// What a look-up gives; it is the escaped text that is looked up, to its first NUL.
std::string Resolved(sim::Machine& machine, const std::string& address) {
  const std::string quoted = Quoted(address);
  const sim::HostEntry entry = machine.names.Find(quoted.substr(1, quoted.size() - 2).c_str());
  return entry.error == 0 && !entry.ipv4.empty() ? entry.ipv4.front() : "";
}

std::string DirectRule(const std::string& matcher, const std::string& value) {
  return "      { \"type\": \"field\", \"" + matcher + "\": [" + Quoted(value) +
         "], \"outboundTag\": \"direct\" },\n";
}

Values ValuesOf(const Input& input, const std::string& outbound) {
  const size_t separator = input.path.find_last_of(L"\\/");
  return {{"@outbound", outbound},
          {"@id", fuzz::Utf8(input.node.uuid)},
          {"@flow", fuzz::Utf8(input.node.flow)},
          {"@sni", fuzz::Utf8(input.node.sni)},
          {"@print", fuzz::Utf8(input.node.fingerprint)},
          {"@key", fuzz::Utf8(input.node.publicKey)},
          {"@short", fuzz::Utf8(input.node.shortId)},
          {"@alias", fuzz::Utf8(input.alias)},
          {"@log", fuzz::Utf8(input.path.substr(0, separator + 1)) + "xray-error.log"}};
}

void Replace(std::string& text, const std::string& what, const std::string& with) {
  const size_t at = text.find(what);
  Require(at != std::string::npos, "the plain node's file holds each of its values");
  text.replace(at, what.size(), with);
}

// What a strict parser sees: the string values in their order.
class StringValues : public nlohmann::json_sax<nlohmann::json> {
 public:
  explicit StringValues(const std::string& text) {
    Require(nlohmann::json::sax_parse(text, this), "the file parses");
  }
  const std::vector<std::string>& Get() const { return values_; }

  bool null() override { return true; }
  bool boolean(bool /*value*/) override { return true; }
  bool number_integer(number_integer_t /*value*/) override { return true; }
  bool number_unsigned(number_unsigned_t /*value*/) override { return true; }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return true; }
  bool string(string_t& value) override {
    values_.push_back(std::move(value));
    return true;
  }
  bool binary(binary_t& /*value*/) override { return true; }
  bool start_object(size_t /*size*/) override { return true; }
  bool key(string_t& /*value*/) override { return true; }
  bool end_object() override { return true; }
  bool start_array(size_t /*size*/) override { return true; }
  bool end_array() override { return true; }
  bool parse_error(size_t /*at*/, const std::string& /*token*/,
                   const nlohmann::json::exception& /*why*/) override {
    return false;
  }

 private:
  std::vector<std::string> values_;
};

// The file of a node whose values are marks.
struct PlainFile {
  std::vector<std::string> pieces;            // text and marks in turn
  std::map<size_t, std::string> placeOfMark;  // among the string values
};

PlainFile MakePlainFile(sim::Machine& machine) {
  std::string text = Generate(
      machine, ReadInput("-1\n@outbound:\n@id\n@flow\n@sni\n@print\n@key\n@short\n@alias"));
  Replace(text, "\"C:\\\\run\\\\xray-error.log\"", "\"@log\"");
  Replace(text, "\"address\": \"@outbound:\"", "\"address\": \"@outbound\"");
  PlainFile plain;
  const std::vector<std::string> values = StringValues(text).Get();
  for (size_t i = 0; i < values.size(); ++i) {
    if (values[i].starts_with('@') && values[i] != "@outbound:") {
      plain.placeOfMark.emplace(i, values[i]);
    }
  }
  Require(plain.placeOfMark.size() == 10, "nine values, and one of them twice");
  Replace(text, "\"port\": -1", "\"port\": \"@port\"");
  Replace(text, DirectRule("ip", "@outbound:"), "\"@rules\"");
  std::string_view rest = text;
  for (size_t open = 0; (open = rest.find("\"@")) != std::string_view::npos;) {
    plain.pieces.emplace_back(rest.substr(0, open));
    rest.remove_prefix(open + 1);
    plain.pieces.emplace_back(fuzz::TakeUntil(rest, '"'));
  }
  plain.pieces.emplace_back(rest);
  return plain;
}

void CheckFile(sim::Machine& machine, const PlainFile& plain, const Input& input,
               const std::string& file) {
  const std::string address = fuzz::Utf8(input.node.address);
  const bool isLiteral = IsLiteral(address);
  const std::string resolved = isLiteral ? "" : Resolved(machine, address);
  const Values values = ValuesOf(input, resolved.empty() ? address : resolved);
  std::string rules =
      isLiteral ? DirectRule("ip", address) : DirectRule("domain", "full:" + address);
  rules += resolved.empty() ? "" : DirectRule("ip", resolved);
  std::string wanted;
  for (size_t i = 0; i < plain.pieces.size(); ++i) {
    const std::string& piece = plain.pieces[i];
    wanted += i % 2 == 0          ? piece
              : piece == "@rules" ? rules
              : piece == "@port"  ? std::to_string(input.node.port)
                                  : Quoted(values.at(piece));
  }
  Require(file == wanted, "the file is the plain node's with this node's values in their places");
  // So it is JSON whenever the plain file is. A strict parser has its say on one file in eight: it
  // costs more than all the rest.
  if (file.size() % 8 != 0) {
    return;
  }
  const StringValues seen(EscapeControlBytes(file));
  for (const auto& [place, mark] : plain.placeOfMark) {
    Require(seen.Get().at(place) == values.at(mark), "a parser sees the node's own value");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static fuzz::SharedMachine shared;
  sim::Machine& machine = shared.Get([](sim::Machine& fresh) {
    fresh.files.PutDirectory(L"C:\\run");
    (void)SetCurrentDirectoryW(L"C:\\run");
    fresh.names.Set("node.example", {"203.0.113.9", "203.0.113.10"});
  });
  static const PlainFile plain = MakePlainFile(machine);
  const Input input = ReadInput(fuzz::Bytes(data, size));
  const std::string file = Generate(machine, input);
  if (!file.empty()) {
    CheckFile(machine, plain, input, file);
  }
  return 0;
}
