// What every target reads its input with, and how it reports a rule that the system broke.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <string_view>

namespace moxel::fuzz {

// Ends the process, by which the fuzzer knows that it has found something.
inline void Require(bool holds, std::string_view rule) {
  if (holds) return;
  std::cerr << "broken rule: " << rule << std::endl;
  std::abort();
}

template <class Actual, class Expected>
void RequireEqual(const Actual& actual, const Expected& expected, std::string_view what) {
  if (actual == expected) return;
  std::cerr << what << ": found \"" << actual << "\", expected \"" << expected << '"' << std::endl;
  std::abort();
}

// Bytes taken as choices, numbers and texts; zeros follow the last one. A digit or a letter is the number
// that it is in base 62, so that inputs can also be written by hand.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  bool empty() const { return rest_.empty(); }

  char Byte() {
    if (rest_.empty()) return '\0';
    const char byte = rest_.front();
    rest_.remove_prefix(1);
    return byte;
  }

  // A number below `count`.
  std::size_t Choose(std::size_t count) {
    const char byte = Byte();
    if (byte >= '0' && byte <= '9') return static_cast<std::size_t>(byte - '0') % count;
    if (byte >= 'A' && byte <= 'Z') return static_cast<std::size_t>(byte - 'A' + 10) % count;
    if (byte >= 'a' && byte <= 'z') return static_cast<std::size_t>(byte - 'a' + 36) % count;
    return static_cast<unsigned char>(byte) % count;
  }

  // True once in `chances`.
  bool Rarely(std::size_t chances) { return Choose(chances) == chances - 1; }

  template <class List>
  auto& Pick(List& list) {
    return *(std::begin(list) + static_cast<std::ptrdiff_t>(Choose(std::size(list))));
  }

  // One of some letters, each of which stands for a kind of step; blanks and line ends before it are passed
  // over.
  char Step(std::string_view letters) {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(" \n"), rest_.size()));
    const char byte = Byte();
    return letters.find(byte) != letters.npos ? byte
                                              : letters[static_cast<unsigned char>(byte) % letters.size()];
  }

  // A number of any value, in as many bytes as it has.
  template <class Number>
  Number Raw() {
    Number number{};
    std::memcpy(&number, rest_.data(), std::min(sizeof number, rest_.size()));
    rest_.remove_prefix(std::min(sizeof number, rest_.size()));
    return number;
  }

  // A text behind its length.
  std::string Text(std::size_t longest) {
    const std::size_t length = Choose(longest + 1);
    std::string text(rest_.substr(0, length));
    rest_.remove_prefix(text.size());
    return text;
  }

  std::string_view TakeRest() {
    const std::string_view rest = rest_;
    rest_ = {};
    return rest;
  }

 private:
  std::string_view rest_;
};

}  // namespace moxel::fuzz
