// Values on their way to the user: numbers as short as they can be without loss, JSON, aligned columns.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

using Json = nlohmann::ordered_json;

/// The double that prints with the float's own digits (550.1 rather than 550.0999755859375).
double Plain(float value);
std::string Shortest(float value);

/// A value for a reader: text without quotes, on and off, lists with commas.
std::string PlainText(const Json& value);

/// To stdout, indented, with a line end.
void Print(const Json& json);
/// To stdout; columns as wide as their widest cell, the first row being the heading. Numbers stand right.
void PrintTable(const std::vector<std::vector<std::string>>& rows);
/// "name:  value" with the values under each other.
void PrintField(const std::string& name, const std::string& value);
