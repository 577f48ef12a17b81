// What commands print: JSON for programs, tables and trees for people.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "moxel/console.h"
#include "moxel/style.h"

namespace moxel::tool {

using Json = nlohmann::ordered_json;

// Escapes beyond ASCII too: the codes of 1252 that are control characters must not reach a terminal.
void PrintJson(const Json& json, const Console& console);

// A single value of a description for a terminal: texts without control characters, yes and no, nothing for
// null.
std::string Readable(const Json& value);

// The columns of a table: a heading and the field of each row that stands below it, in a style that may
// depend on the text.
struct Column {
  const char* heading;
  const char* field;
  Style (*style)(const std::string& text) = nullptr;
};

struct Cell {
  std::string text;
  Style style = Style::kPlain;
};

// One line a row, columns aligned.
void PrintTable(const std::vector<Column>& columns, const Json& rows, const Console& console);

// A blank line, the title and the table below it, indented; "none" where there is no row.
void PrintSection(const std::string& title, const std::vector<Column>& columns, const Json& rows,
                  const Console& console);

// Names and values below one another, the values aligned.
void PrintFields(const std::vector<Column>& fields, const Json& object, const Console& console);

struct TreeNode {
  std::string label;
  std::vector<TreeNode> children;
  Cell state = {};  // printed behind the label where there is one
};

void PrintTree(const TreeNode& root, const Console& console);

}  // namespace moxel::tool
