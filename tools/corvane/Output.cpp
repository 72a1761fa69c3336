#include "Output.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>

namespace {

constexpr int kFieldWidth = 23;

bool IsNumber(const std::string& text) {
  return !text.empty() && text.find_first_not_of("+-.0123456789e") == std::string::npos;
}

}  // namespace

std::string Shortest(float value) {
  std::array<char, 64> buffer{};
  const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  return {buffer.data(), error == std::errc{} ? end : buffer.data()};
}

double Plain(float value) {
  const std::string text = Shortest(value);
  double number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::string PlainText(const Json& value) {
  if (value.is_string()) {
    return value.get<std::string>();
  }
  if (value.is_boolean()) {
    return value.get<bool>() ? "on" : "off";
  }
  std::string text;
  if (value.is_structured()) {
    for (const auto& item : value.items()) {
      text += (text.empty() ? "" : ", ") + (value.is_object() ? item.key() + " " : "") + item.value().dump();
    }
    return text;
  }
  return value.dump();
}

void Print(const Json& json) {
  std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void PrintTable(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], row[i].size());
    }
  }
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string padding(widths[i] - row[i].size(), ' ');
      // A heading stands over the numbers of its column.
      const bool right = IsNumber(rows.back()[i]);
      line += (i == 0 ? "" : "  ") + (right ? padding + row[i] : row[i] + padding);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    std::cout << line << '\n';
  }
}

void PrintField(const std::string& name, const std::string& value) {
  std::cout << std::left << std::setw(kFieldWidth) << (name + ":") << value << '\n';
}
