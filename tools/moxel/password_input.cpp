#include "moxel/password_input.h"

#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <iostream>

#include "moxel/ansi_text.h"
#include "moxel/error.h"

namespace moxel::tool {
namespace {

constexpr std::array kDeadlySignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

termios terminal_before;  // where a signal handler finds it

// The default action follows: the handler is installed for one signal, and the one raised here is delivered
// when it returns.
extern "C" void RestoreTerminal(int signal) {
  ::tcsetattr(STDIN_FILENO, TCSANOW, &terminal_before);
  ::raise(signal);
}

// The terminal of standard input without echo; restored at the end, also at one by a signal.
class EchoOff {
 public:
  EchoOff() {
    if (::tcgetattr(STDIN_FILENO, &terminal_before) != 0) throw ToolError::System("terminal", errno);
    struct sigaction restore {};
    restore.sa_handler = RestoreTerminal;
    restore.sa_flags = static_cast<int>(SA_RESETHAND);
    for (size_t i = 0; i < kDeadlySignals.size(); ++i) {
      ::sigaction(kDeadlySignals[i], nullptr, &before_[i]);
      if (before_[i].sa_handler != SIG_IGN) ::sigaction(kDeadlySignals[i], &restore, nullptr);
    }
    termios silent = terminal_before;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
  }
  ~EchoOff() {
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &terminal_before);
    for (size_t i = 0; i < kDeadlySignals.size(); ++i) ::sigaction(kDeadlySignals[i], &before_[i], nullptr);
  }
  EchoOff(const EchoOff&) = delete;
  EchoOff& operator=(const EchoOff&) = delete;

 private:
  std::array<struct sigaction, kDeadlySignals.size()> before_{};
};

std::optional<std::string> ReadLine(std::istream& in) {
  std::string line;
  if (!std::getline(in, line)) return std::nullopt;
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

// What an error says of a password must not quote it.
Variant Checked(const std::string& password) {
  if (!IsUtf8(password)) throw ToolError("password: not UTF-8");
  Variant text = FromUtf8(password);
  try {
    AnsiFromUtf16(text.text());
  } catch (const CodePageError&) {
    throw ToolError("password: a character of it is not in code page 1252");
  }
  return text;
}

}  // namespace

PasswordInput::PasswordInput(const Console& console, bool plain_lines)
    : console_(console), terminal_(!plain_lines && &console.in == &std::cin && ::isatty(STDIN_FILENO) == 1) {}

Variant PasswordInput::Ask(const std::string& prompt) {
  const std::optional<std::string> password = Read(prompt);
  if (!password) throw ToolError("no password on standard input");
  return Checked(*password);
}

Variant PasswordInput::AskAgain(const std::string& prompt, const Variant& first) {
  if (terminal_) return Ask(prompt);
  const std::optional<std::string> password = Read(prompt);
  return password ? Checked(*password) : first;
}

std::optional<Variant> PasswordInput::AskIfAny(const std::string& prompt) {
  const std::optional<std::string> password = Read(prompt);
  if (!password || (terminal_ && password->empty())) return std::nullopt;
  return Checked(*password);
}

std::optional<std::string> PasswordInput::Read(const std::string& prompt) {
  if (!terminal_) return ReadLine(console_.in);
  console_.err << prompt << ": " << std::flush;
  const EchoOff silence;
  std::optional<std::string> line = ReadLine(console_.in);
  console_.err << '\n';
  return line;
}

}  // namespace moxel::tool
