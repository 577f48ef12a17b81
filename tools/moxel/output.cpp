#include "moxel/output.h"

#include <algorithm>

#include "moxel/ansi_text.h"
#include "moxel/variant.h"

namespace moxel::tool {
namespace {

using Row = std::vector<Cell>;

size_t Width(const std::string& text) {
  return static_cast<size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string Text(const Cell& cell, const Console& console) {
  return Painted(cell.text, cell.style, console.ColorsOut());
}

// Nothing is padded at a line's end.
void PrintAligned(const std::vector<Row>& rows, const std::string& indent, const Console& console) {
  std::vector<size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Width(row[i].text));
  }
  for (const Row& row : rows) {
    std::string line = indent;
    for (size_t i = 0; i < row.size(); ++i)
      line += Text(row[i], console) + std::string(widths[i] + 2 - Width(row[i].text), ' ');
    line.erase(line.find_last_not_of(' ') + 1);
    console.out << line << '\n';
  }
}

Cell CellOf(const Column& column, const Json& object) {
  const std::string text = Readable(object.value(column.field, Json()));
  return {text, column.style ? column.style(text) : Style::kPlain};
}

std::vector<Row> RowsOf(const std::vector<Column>& columns, const Json& objects) {
  std::vector<Row> rows(1);
  for (const Column& column : columns) rows[0].push_back({column.heading, Style::kHeading});
  for (const Json& object : objects) {
    Row& row = rows.emplace_back();
    for (const Column& column : columns) row.push_back(CellOf(column, object));
  }
  return rows;
}

void PrintNode(const TreeNode& node, const Console& console) {
  console.out << node.label;
  if (!node.state.text.empty()) console.out << ": " << Text(node.state, console);
  console.out << '\n';
}

void PrintBelow(const TreeNode& node, const std::string& indent, const Console& console) {
  for (const TreeNode& child : node.children) {
    const bool last = &child == &node.children.back();
    console.out << indent << (last ? "└─ " : "├─ ");
    PrintNode(child, console);
    PrintBelow(child, indent + (last ? "   " : "│  "), console);
  }
}

}  // namespace

void PrintJson(const Json& json, const Console& console) { console.out << json.dump(2, ' ', true) << '\n'; }

std::string Readable(const Json& value) {
  if (value.is_null()) return "";
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_number_float()) return ToUtf8(Variant(value.get<double>()).ToText());
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
  for (const Column& field : fields) lines.push_back({{field.heading}, CellOf(field, object)});
  PrintAligned(lines, "", console);
}

void PrintTree(const TreeNode& root, const Console& console) {
  PrintNode(root, console);
  PrintBelow(root, "", console);
}

}  // namespace moxel::tool
