#include "moxel/output.h"

#include <algorithm>

#include "moxel/text.h"
#include "moxel/variant.h"

namespace moxel::tool {
namespace {

using Row = std::vector<std::string>;

size_t Width(const std::string& text) {
  return static_cast<size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

// Nothing is padded at a line's end.
void PrintAligned(const std::vector<Row>& rows, const std::string& indent, const Console& console) {
  std::vector<size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Width(row[i]));
  }
  for (const Row& row : rows) {
    std::string line = indent;
    for (size_t i = 0; i < row.size(); ++i) line += row[i] + std::string(widths[i] + 2 - Width(row[i]), ' ');
    line.erase(line.find_last_not_of(' ') + 1);
    console.out << line << '\n';
  }
}

std::vector<Row> RowsOf(const std::vector<Column>& columns, const Json& objects) {
  std::vector<Row> rows(1);
  for (const Column& column : columns) rows[0].push_back(column.heading);
  for (const Json& object : objects) {
    Row& row = rows.emplace_back();
    for (const Column& column : columns) row.push_back(Readable(object.value(column.field, Json())));
  }
  return rows;
}

void PrintBelow(const TreeNode& node, const std::string& indent, const Console& console) {
  for (const TreeNode& child : node.children) {
    const bool last = &child == &node.children.back();
    console.out << indent << (last ? "└─ " : "├─ ") << child.label << '\n';
    PrintBelow(child, indent + (last ? "   " : "│  "), console);
  }
}

}  // namespace

void PrintJson(const Json& json, const Console& console) { console.out << json.dump(2, ' ', true) << '\n'; }

std::string Readable(const Json& value) {
  if (value.is_null()) return "";
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_number_float()) return Utf8FromUtf16(Variant(value.get<double>()).ToText());
  if (value.is_string()) return PrintableFromAnsi(AnsiFromUtf8(value.get<std::string>()));
  return value.dump();
}

void PrintTable(const std::vector<Column>& columns, const Json& rows, const Console& console) {
  PrintAligned(RowsOf(columns, rows), "", console);
}

void PrintSection(const std::string& title, const std::vector<Column>& columns, const Json& rows,
                  const Console& console) {
  console.out << '\n' << title << (rows.empty() ? ": none\n" : "\n");
  if (!rows.empty()) PrintAligned(RowsOf(columns, rows), "  ", console);
}

void PrintFields(const std::vector<Column>& fields, const Json& object, const Console& console) {
  std::vector<Row> lines;
  lines.reserve(fields.size());
  for (const Column& field : fields)
    lines.push_back({field.heading, Readable(object.value(field.field, Json()))});
  PrintAligned(lines, "", console);
}

void PrintTree(const TreeNode& root, const Console& console) {
  console.out << root.label << '\n';
  PrintBelow(root, "", console);
}

}  // namespace moxel::tool
