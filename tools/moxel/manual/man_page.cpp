#include "moxel/manual/man_page.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <vector>

#include "moxel/command_line.h"
#include "moxel/verbs.h"

namespace moxel::tool {
namespace {

// A text that comes out as it is, also where it begins a line.
std::string Plain(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '\\': escaped += "\\e"; break;
      case '-': escaped += "\\-"; break;
      case '\'': escaped += "\\(aq"; break;
      case '`': escaped += "\\(ga"; break;
      case '^': escaped += "\\(ha"; break;
      case '~': escaped += "\\(ti"; break;
      default: escaped += c;
    }
  }
  return escaped.starts_with('.') ? "\\&" + escaped : escaped;
}

std::string Bold(std::string_view text) { return "\\fB" + Plain(text) + "\\fR"; }
std::string Italic(std::string_view text) { return "\\fI" + Plain(text) + "\\fR"; }

std::string Capitals(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
  return text;
}

std::string Item(const std::string& head, std::string_view text) {
  return ".TP\n" + head + '\n' + Plain(text) + '\n';
}

// ---- Options

std::string Value(const CLI::Option& option) {
  std::vector<std::string> choices = ChoicesOf(option);
  if (choices.empty()) return Italic(LabelOf(option));
  for (std::string& choice : choices) choice = Bold(choice);
  return CLI::detail::join(choices, "|");
}

std::string OptionHead(const CLI::Option& option) {
  std::vector<std::string> names;
  if (option.get_positional()) names.push_back(Italic(option.get_name(true)));
  for (const std::string& name : option.get_snames()) names.push_back(Bold("-" + name));
  for (const std::string& name : option.get_lnames()) names.push_back(Bold("--" + name));
  const bool bare = !TakesValue(option) || !option.nonpositional();
  return CLI::detail::join(names, ", ") + (bare ? "" : ' ' + Value(option));
}

std::string OptionItem(const CLI::Option& option) {
  const std::string standard = option.get_default_str();
  return Item(OptionHead(option),
              option.get_description() + (standard.empty() ? "" : " (default: " + standard + ")"));
}

// The options of a group one of which is required: "{--domain DOMAIN | --scenario SCENARIO}".
std::string Alternatives(const CLI::App& group) {
  std::vector<std::string> heads;
  for (const CLI::Option* option : OptionsOf(group)) heads.push_back(OptionHead(*option));
  return " {" + CLI::detail::join(heads, " | ") + '}';
}

std::string Usage(const CLI::App& verb) {
  std::string usage = Bold(PathOf(verb));
  std::string arguments;
  for (const CLI::Option* option : OptionsOf(verb)) {
    if (option->get_positional()) {
      const std::string name = Italic(option->get_name(true));
      arguments += option->get_required() ? ' ' + name : " [" + name + ']';
    } else if (option->get_required()) {
      usage += ' ' + OptionHead(*option);
    }
  }
  for (const CLI::App* group : verb.get_subcommands({}))
    if (group->get_name().empty() && group->get_require_option_min() > 0) usage += Alternatives(*group);
  usage += " [" + Italic("OPTIONS") + ']' + arguments;
  if (!VerbsOf(verb).empty())
    usage += (verb.get_parent() ? " " : " [" + Italic("GROUP") + "] ") + Italic("VERB");
  return usage + '\n';
}

// ---- Footers: paragraphs that an empty line parts, some of them a title and indented lines below it

// "word  what it means" as an item, any other line as it is.
std::string Line(std::string_view line) {
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  const size_t gap = line.find("  ");
  if (gap == std::string_view::npos) return ".RS 4\n.nf\n" + Plain(line) + "\n.fi\n.RE\n";
  return Item(Bold(line.substr(0, gap)), line.substr(line.find_first_not_of(' ', gap)));
}

std::string Paragraph(const std::string& text, bool is_section) {
  const std::vector<std::string> lines = CLI::detail::split(text, '\n');
  if (!lines[0].ends_with(':')) return ".PP\n" + Plain(text) + '\n';
  const std::string title = lines[0].substr(0, lines[0].size() - 1);
  std::string roff = is_section ? ".SH " + Plain(Capitals(title)) + '\n' : ".PP\n" + Plain(lines[0]) + '\n';
  for (size_t i = 1; i < lines.size(); ++i) roff += Line(lines[i]);
  return roff;
}

std::string Footer(const CLI::App& verb) {
  std::string roff;
  const std::string footer = verb.get_footer();
  for (size_t begin = 0; begin < footer.size();) {
    const size_t end = std::min(footer.find("\n\n", begin), footer.size());
    roff += Paragraph(footer.substr(begin, end - begin), !verb.get_parent());
    begin = end + 2;
  }
  return roff;
}

std::string Section(const CLI::App& verb) {
  std::string roff =
      ".SS " + Plain(PathOf(verb)) + '\n' + Plain(verb.get_description()) + ".\n.PP\n" + Usage(verb);
  for (const CLI::Option* option : OptionsOf(verb)) roff += OptionItem(*option);
  return roff + Footer(verb);
}

std::string Summary(const CLI::App& app) {
  std::string text = app.get_description();
  text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
  if (text.ends_with('.')) text.pop_back();
  return text;
}

}  // namespace

std::string ManPage(const CLI::App& app, const std::string& date) {
  std::string roff = ".TH MOXEL 1 " + date + " \"MOXEL " + kVersion + "\" \"MOXEL Components\"\n" +
                     ".SH NAME\nmoxel \\- " + Plain(Summary(app)) + "\n.SH SYNOPSIS\n" + Usage(app) +
                     ".SH OPTIONS\nThose that take a value may stand behind every verb as well.\n" +
                     OptionItem(*app.get_help_ptr());
  for (const CLI::Option* option : OptionsOf(app)) roff += OptionItem(*option);
  roff += ".SH COMMANDS\n";
  VisitVerbs(app, [&](const CLI::App& verb) {
    if (verb.get_parent()) roff += Section(verb);
  });
  return roff + Footer(app);
}

}  // namespace moxel::tool
