// A Network as JSON text: what the processes of one end-to-end test share, and what a person reads.
#ifndef TAVRIN_TESTS_NETMODEL_NETWORK_JSON_H_
#define TAVRIN_TESTS_NETMODEL_NETWORK_JSON_H_

#include <string>

#include <nlohmann/json.hpp>

#include "tests/netmodel/network_model.h"

namespace netmodel {

// Found by nlohmann::json through the namespace. Addresses and destinations are written dotted,
// GUIDs as 32 hexadecimal digits in memory order. A key that is absent on reading keeps the
// field's default; a value of the wrong kind throws nlohmann::json::exception.
void to_json(nlohmann::json& json, const Network& network);
void from_json(const nlohmann::json& json, Network& network);

// Indented by two blanks, with a line feed at the end.
std::string FormatNetwork(const Network& network);
// Throws nlohmann::json::exception for a text that is no such JSON.
Network ParseNetwork(const std::string& text);

}  // namespace netmodel

#endif  // TAVRIN_TESTS_NETMODEL_NETWORK_JSON_H_
