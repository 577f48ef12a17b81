#include "platform/locale/user_locale.h"

#include <langinfo.h>
#include <locale.h>

#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <string_view>

#include "platform/locale/code_pages.h"
#include "platform/locale/locale_table.h"

namespace moxel {
namespace {

constexpr char16_t kNoBreak = 0x00A0;
constexpr char16_t kNarrow = 0x202F;

// A locale of the C library, by name; false when it is not installed.
class InstalledLocale {
 public:
  InstalledLocale(int categories, const std::string& name)
      : handle_(::newlocale(categories, name.c_str(), locale_t{})) {}
  ~InstalledLocale() {
    if (handle_ != locale_t{}) ::freelocale(handle_);
  }
  InstalledLocale(const InstalledLocale&) = delete;
  InstalledLocale& operator=(const InstalledLocale&) = delete;

  explicit operator bool() const { return handle_ != locale_t{}; }

  // The text is in the locale's own encoding: UTF-8, or on old systems a single-byte one close to the code
  // page.
  std::u16string Text(nl_item item) const {
    const char* bytes = ::nl_langinfo_l(item, handle_);
    std::u16string text = DecodeUtf8(bytes);
    return text.find(u'\xFFFD') == text.npos ? text : DecodeAnsi(bytes);
  }

 private:
  locale_t handle_;
};

bool IsPortable(std::string_view name) {
  const std::string_view base = name.substr(0, name.find_first_of(".@"));
  return base == "C" || base == "POSIX";
}

NumericLocale DeriveNumeric(const std::string& name) {
  const LocaleConventions& known = FindConventions(name);
  NumericLocale derived{known.decimal, known.group};
  if (IsPortable(name)) return derived;
  if (const InstalledLocale installed(LC_NUMERIC_MASK, name); installed) {
    const std::u16string decimal = installed.Text(RADIXCHAR);
    const std::u16string group = installed.Text(THOUSEP);
    derived = {decimal.empty() ? u'.' : decimal.front(), group.empty() ? u'\0' : group.front()};
  }
  return derived;
}

// Turns a format of strftime() into a picture; nothing when it holds a field that pictures do not know.
class PictureTranslator {
 public:
  explicit PictureTranslator(const InstalledLocale& locale) : locale_(locale) {}

  std::optional<std::u16string> Translate(std::u16string_view format) {
    for (std::size_t i = 0; i < format.size(); ++i) {
      if (format[i] != u'%') {
        PutLiteral(format[i]);
        continue;
      }
      bool padded = true;
      while (++i < format.size() &&
             std::u16string_view(u"-_0^#EO").find(format[i]) != std::u16string_view::npos) {
        if (format[i] == u'-') padded = false;
      }
      if (i == format.size() || !PutField(format[i], padded)) return std::nullopt;
    }
    return std::move(picture_);
  }

 private:
  void PutLiteral(char16_t character) {
    const bool letter = (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z');
    if (character == u'\'') {
      picture_ += u"''''";
    } else if (letter) {
      picture_ += {u'\'', character, u'\''};
    } else {
      picture_ += character;
    }
  }

  bool PutField(char16_t field, bool padded) {
    switch (field) {
      case u'd': picture_ += padded ? u"dd" : u"d"; return true;
      case u'e': picture_ += u"d"; return true;
      case u'm': picture_ += padded ? u"MM" : u"M"; return true;
      case u'b':
      case u'h': picture_ += u"MMM"; return true;
      case u'B': picture_ += u"MMMM"; return true;
      case u'a': picture_ += u"ddd"; return true;
      case u'A': picture_ += u"dddd"; return true;
      // The year in full always: two digits would not tell the century.
      case u'y':
      case u'Y': picture_ += u"yyyy"; return true;
      case u'H': picture_ += padded ? u"HH" : u"H"; return true;
      case u'k': picture_ += u"H"; return true;
      case u'I': picture_ += padded ? u"hh" : u"h"; return true;
      case u'l': picture_ += u"h"; return true;
      case u'M': picture_ += u"mm"; return true;
      case u'S': picture_ += u"ss"; return true;
      case u'p':
      case u'P': picture_ += u"tt"; return true;
      case u'D': picture_ += u"MM/dd/yyyy"; return true;
      case u'F': picture_ += u"yyyy-MM-dd"; return true;
      case u'T': picture_ += u"HH:mm:ss"; return true;
      case u'R': picture_ += u"HH:mm"; return true;
      case u'r': return PutTwelveHours();
      case u'%': picture_ += u'%'; return true;
      default: return false;
    }
  }

  bool PutTwelveHours() {
    const std::u16string format = locale_.Text(T_FMT_AMPM);
    if (format.find(u"%r") != format.npos) return false;
    const auto nested = PictureTranslator(locale_).Translate(format);
    picture_ += nested.value_or(u"");
    return nested.has_value() && !nested->empty();
  }

  const InstalledLocale& locale_;
  std::u16string picture_;
};

void TakeNames(const InstalledLocale& source, TimeLocale& target) {
  for (std::size_t i = 0; i < target.months.size(); ++i) {
    target.months[i] = source.Text(MON_1 + static_cast<nl_item>(i));
    target.short_months[i] = source.Text(ABMON_1 + static_cast<nl_item>(i));
  }
  for (std::size_t i = 0; i < target.days.size(); ++i) {
    target.days[i] = source.Text(DAY_1 + static_cast<nl_item>(i));
    target.short_days[i] = source.Text(ABDAY_1 + static_cast<nl_item>(i));
  }
  target.am = source.Text(AM_STR);
  target.pm = source.Text(PM_STR);
}

void TakePictures(const InstalledLocale& source, TimeLocale& target) {
  const auto date = PictureTranslator(source).Translate(source.Text(D_FMT));
  const auto time = PictureTranslator(source).Translate(source.Text(T_FMT));
  if (date && !date->empty()) target.date_picture = *date;
  if (time && !time->empty()) target.time_picture = *time;
}

TimeLocale DeriveTime(const std::string& name) {
  const LocaleConventions& known = FindConventions(name);
  TimeLocale derived;
  derived.date_picture = known.date_picture;
  derived.time_picture = known.time_picture;
  const InstalledLocale installed(LC_TIME_MASK, name);
  if (IsPortable(name) || !installed) {
    TakeNames(InstalledLocale(LC_TIME_MASK, "C"), derived);
  } else {
    TakeNames(installed, derived);
    TakePictures(installed, derived);
  }
  return derived;
}

const char* EffectiveName(const char* category) {
  for (const char* variable : {"LC_ALL", category, "LANG"}) {
    if (const char* value = std::getenv(variable); value != nullptr && *value != '\0') return value;
  }
  return "C";
}

template <class Locale>
using NamedLocale = std::pair<const std::string, Locale>;

// Entries are never removed, and the map is never destroyed, so threads may keep pointers into it to their
// very end.
template <class Locale>
const NamedLocale<Locale>& Shared(const std::string& name, Locale (*derive)(const std::string&)) {
  static auto& mutex = *new std::mutex;
  static auto& known = *new std::map<std::string, Locale>;
  const std::lock_guard lock(mutex);
  auto found = known.find(name);
  if (found == known.end()) found = known.emplace(name, derive(name)).first;
  return *found;
}

template <class Locale>
const Locale& Current(const char* category, Locale (*derive)(const std::string&)) {
  thread_local const NamedLocale<Locale>* current = nullptr;
  const char* name = EffectiveName(category);
  if (current == nullptr || current->first != name) current = &Shared(name, derive);
  return current->second;
}

}  // namespace

bool NumericLocale::IsGroup(char16_t character) const {
  if (group == 0) return false;
  if (character == group) return true;
  if (group == u' ' || group == kNoBreak || group == kNarrow) {
    return character == u' ' || character == kNoBreak || character == kNarrow;
  }
  // Keyboards have the straight apostrophe only.
  return group == u'\x2019' && character == u'\'';
}

const NumericLocale& UserNumericLocale() { return Current("LC_NUMERIC", DeriveNumeric); }
const TimeLocale& UserTimeLocale() { return Current("LC_TIME", DeriveTime); }

}  // namespace moxel
