// Build tool: turns the table of texts into C++, and refuses a table that does not agree with the
// names in string_id.h.
//
//   compile_strings TABLE HEADER OUTPUT
//
// Faults go to the standard error stream as FILE:LINE: TEXT, all of them in one run. With a fault
// the exit code is 1 and no output is written.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kFirstText = 3;
constexpr std::size_t kLanguages = 3;
constexpr std::size_t kFieldsWithoutNote = kFirstText + kLanguages;

struct Row {
  std::string name;
  std::string kind;
  std::array<std::string, kLanguages> literals;
  int line = 0;
};

struct Name {
  std::uint32_t id = 0;
  int line = 0;
};

class Faults {
 public:
  void Add(const std::string& file, int line, const std::string& text) {
    std::cerr << file << ':' << line << ": " << text << '\n';
    ++count_;
  }
  bool Any() const { return count_ > 0; }

 private:
  int count_ = 0;
};

std::optional<std::uint32_t> Number(std::string_view text) {
  constexpr std::size_t kMostDigits = 9;
  if (text.empty() || text.size() > kMostDigits ||
      text.find_first_not_of("0123456789") != std::string_view::npos) {
    return std::nullopt;
  }
  std::uint32_t value = 0;
  for (const char digit : text) {
    value = value * 10 + static_cast<std::uint32_t>(digit - '0');
  }
  return value;
}

std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields(1);
  for (const char c : line) {
    if (c == '\t') {
      fields.emplace_back();
    } else {
      fields.back() += c;
    }
  }
  return fields;
}

bool IsUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    if (lead >= 0xF5 || (lead >= 0x80 && lead < 0xC2)) {
      return false;
    }
    const int more = (lead >= 0xC2 ? 1 : 0) + (lead >= 0xE0 ? 1 : 0) + (lead >= 0xF0 ? 1 : 0);
    for (int k = 0; k < more; ++k) {
      if (i >= text.size() || (static_cast<unsigned char>(text[i++]) & 0xC0) != 0x80) {
        return false;
      }
    }
  }
  return true;
}

// The inside of a C++ literal for a text of the table, or what is wrong with the text.
std::string Literal(std::string_view text, std::string& fault) {
  if (text.empty()) {
    fault = "empty text";
  } else if (text.front() == ' ' || text.back() == ' ') {
    fault = "a blank at the end of a text is written \\s";
  } else if (!IsUtf8(text)) {
    fault = "text is not UTF-8";
  }
  std::string literal;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') {
      literal += "\\\"";
    } else if (c == '\\') {
      const char escape = i + 1 < text.size() ? text[++i] : ' ';
      if (std::string_view("rnt\\s").find(escape) == std::string_view::npos) {
        fault = std::string("unknown escape \\") + escape;
      }
      literal += escape == 's' ? std::string(" ") : std::string("\\") + escape;
    } else if (static_cast<unsigned char>(c) < ' ') {
      fault = "control character in a text";
    } else {
      literal += c;
    }
  }
  return literal;
}

// The enumerators of string_id.h: lines of the form "Name = number,".
std::map<std::string, Name> ReadNames(std::istream& header) {
  std::map<std::string, Name> names;
  std::string text;
  for (int line = 1; std::getline(header, text); ++line) {
    std::istringstream words(text);
    std::string name;
    std::string equals;
    std::string number;
    if (words >> name >> equals >> number && equals == "=" && number.ends_with(',')) {
      number.pop_back();
      if (const auto id = Number(number)) {
        names[name] = {*id, line};
      }
    }
  }
  return names;
}

std::optional<Row> ReadRow(const std::string& file, int line,
                           const std::vector<std::string>& fields, Faults& faults) {
  if (fields.size() != kFieldsWithoutNote && fields.size() != kFieldsWithoutNote + 1) {
    faults.Add(file, line, "a row has 6 or 7 fields, this one " + std::to_string(fields.size()));
    return std::nullopt;
  }
  Row row{fields[1], fields[2], {}, line};
  if (row.kind != "string" && row.kind != "menu" && row.kind != "caption") {
    faults.Add(file, line, "unknown kind '" + row.kind + "'");
  }
  for (std::size_t i = 0; i < kLanguages; ++i) {
    std::string fault;
    row.literals.at(i) = Literal(fields[kFirstText + i], fault);
    if (!fault.empty()) {
      faults.Add(file, line, fault + " (field " + std::to_string(kFirstText + i + 1) + ")");
    }
  }
  return row;
}

std::map<std::uint32_t, Row> ReadTable(std::istream& table, const std::string& file,
                                       const std::map<std::string, Name>& names, Faults& faults) {
  std::map<std::uint32_t, Row> rows;
  std::string text;
  for (int line = 1; std::getline(table, text); ++line) {
    if (text.empty() || text.front() == '#') {
      continue;
    }
    const auto fields = Fields(text);
    const auto row = ReadRow(file, line, fields, faults);
    if (!row) {
      continue;
    }
    const auto id = Number(fields[0]);
    const auto name = names.find(row->name);
    if (!id) {
      faults.Add(file, line, "'" + fields[0] + "' is no id");
    } else if (name == names.end() || name->second.id != *id) {
      faults.Add(file, line, "string_id.h has no " + row->name + " = " + fields[0]);
    } else if (const auto [first, isNew] = rows.try_emplace(*id, *row); !isNew) {
      faults.Add(
          file, line,
          "id " + fields[0] + " stands in line " + std::to_string(first->second.line) + " too");
    }
  }
  return rows;
}

void CheckComplete(const std::map<std::uint32_t, Row>& rows,
                   const std::map<std::string, Name>& names, const std::string& headerFile,
                   Faults& faults) {
  if (names.empty()) {
    faults.Add(headerFile, 1, "no names found");
  }
  for (const auto& [name, known] : names) {
    const auto row = rows.find(known.id);
    if (row == rows.end()) {
      faults.Add(headerFile, known.line, name + " has no row in the table");
    } else if (row->second.name != name) {
      faults.Add(headerFile, known.line, name + " has the number of " + row->second.name);
    }
  }
}

void WriteTable(std::ostream& out, const std::map<std::uint32_t, Row>& rows) {
  out << "// Made from texts.inc at build time.\n"
         "#include \"resources/string_table.h\"\n\n"
         "namespace updown {\nnamespace {\n\nusing namespace std::string_view_literals;\n\n"
         "constexpr std::array<StringRow, "
      << rows.size() << "> kRows{{\n";
  for (const auto& [id, row] : rows) {
    out << "    {" << id << "U, " << (row.kind == "string" ? "true" : "false") << ", {";
    for (const std::string& literal : row.literals) {
      out << "u\"" << literal << "\"sv, ";
    }
    out << "}},\n";
  }
  out << "}};\n\n}  // namespace\n\n"
         "std::span<const StringRow> StringTable() { return kRows; }\n\n}  // namespace updown\n";
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv, argv + argc);
  if (arguments.size() != 4) {
    std::cerr << "usage: compile_strings TABLE HEADER OUTPUT\n";
    return 2;
  }
  std::ifstream table(arguments[1]);
  std::ifstream header(arguments[2]);
  if (!table || !header) {
    std::cerr << "compile_strings: cannot read " << arguments[table ? 2 : 1] << '\n';
    return 2;
  }
  Faults faults;
  const auto names = ReadNames(header);
  const auto rows = ReadTable(table, arguments[1], names, faults);
  CheckComplete(rows, names, arguments[2], faults);
  if (faults.Any()) {
    return 1;
  }
  std::ofstream out(arguments[3], std::ios::trunc);
  WriteTable(out, rows);
  out.close();
  if (!out) {
    std::cerr << "compile_strings: cannot write " << arguments[3] << '\n';
    std::remove(arguments[3].c_str());
    return 2;
  }
  return 0;
}
