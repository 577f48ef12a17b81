#include "platform/locale/locale_table.h"

#include <algorithm>
#include <iterator>

namespace moxel {
namespace {

constexpr char16_t kNoBreak = 0x00A0;
constexpr char16_t kNarrow = 0x202F;
constexpr char16_t kApostrophe = 0x2019;

constexpr std::u16string_view kDayMonthDots = u"dd.MM.yyyy";
constexpr std::u16string_view kDayMonthSlashes = u"dd/MM/yyyy";
constexpr std::u16string_view kDayMonthDashes = u"dd-MM-yyyy";
constexpr std::u16string_view kYearFirst = u"yyyy-MM-dd";
constexpr std::u16string_view k24Hours = u"HH:mm:ss";
constexpr std::u16string_view k12Hours = u"hh:mm:ss tt";

constexpr LocaleConventions kTable[] = {
    {"C", u'.', 0, u"MM/dd/yyyy", k24Hours},
    {"bg", u',', kNoBreak, kDayMonthDots, k24Hours},
    {"ca", u',', u'.', kDayMonthSlashes, k24Hours},
    {"cs", u',', kNoBreak, kDayMonthDots, k24Hours},
    {"da", u',', u'.', kDayMonthDashes, k24Hours},
    {"de", u',', u'.', kDayMonthDots, k24Hours},
    {"de_CH", u'.', kApostrophe, kDayMonthDots, k24Hours},
    {"de_LI", u'.', kApostrophe, kDayMonthDots, k24Hours},
    {"el", u',', u'.', kDayMonthSlashes, k24Hours},
    {"en", u'.', u',', u"MM/dd/yyyy", k12Hours},
    {"en_AU", u'.', u',', kDayMonthSlashes, k24Hours},
    {"en_CA", u'.', u',', kYearFirst, k12Hours},
    {"en_GB", u'.', u',', kDayMonthSlashes, k24Hours},
    {"en_IE", u'.', u',', kDayMonthSlashes, k24Hours},
    {"en_NZ", u'.', u',', kDayMonthSlashes, k24Hours},
    {"es", u',', u'.', kDayMonthSlashes, k24Hours},
    {"es_MX", u'.', u',', kDayMonthSlashes, k24Hours},
    {"et", u',', kNoBreak, kDayMonthDots, k24Hours},
    {"fi", u',', kNoBreak, kDayMonthDots, k24Hours},
    {"fr", u',', kNarrow, kDayMonthSlashes, k24Hours},
    {"fr_CA", u',', kNoBreak, kYearFirst, k24Hours},
    {"fr_CH", u',', kNarrow, kDayMonthDots, k24Hours},
    {"hr", u',', u'.', kDayMonthDots, k24Hours},
    {"hu", u',', kNoBreak, u"yyyy-MM-dd", k24Hours},
    {"is", u',', u'.', kDayMonthDots, k24Hours},
    {"it", u',', u'.', kDayMonthSlashes, k24Hours},
    {"it_CH", u'.', kApostrophe, kDayMonthDots, k24Hours},
    {"ja", u'.', u',', u"yyyy/MM/dd", k24Hours},
    {"ko", u'.', u',', kYearFirst, k24Hours},
    {"lt", u',', kNoBreak, kYearFirst, k24Hours},
    {"lv", u',', kNoBreak, kDayMonthDots, k24Hours},
    {"nb", u',', kNoBreak, kDayMonthDots, k24Hours},
    {"nl", u',', u'.', kDayMonthDashes, k24Hours},
    {"nl_BE", u',', u'.', kDayMonthSlashes, k24Hours},
    {"nn", u',', kNoBreak, kDayMonthDots, k24Hours},
    {"no", u',', kNoBreak, kDayMonthDots, k24Hours},
    {"pl", u',', kNoBreak, kDayMonthDots, k24Hours},
    {"pt", u',', kNoBreak, kDayMonthSlashes, k24Hours},
    {"pt_BR", u',', u'.', kDayMonthSlashes, k24Hours},
    {"ro", u',', u'.', kDayMonthDots, k24Hours},
    {"ru", u',', kNoBreak, kDayMonthDots, k24Hours},
    {"sk", u',', kNoBreak, kDayMonthDots, k24Hours},
    {"sl", u',', u'.', kDayMonthDots, k24Hours},
    {"sr", u',', u'.', kDayMonthDots, k24Hours},
    {"sv", u',', kNoBreak, kYearFirst, k24Hours},
    {"tr", u',', u'.', kDayMonthDots, k24Hours},
    {"uk", u',', kNoBreak, kDayMonthDots, k24Hours},
    {"zh", u'.', u',', u"yyyy/MM/dd", k24Hours},
};

const LocaleConventions* Find(std::string_view name) {
  const auto* found = std::ranges::find(kTable, name, &LocaleConventions::name);
  return found == std::end(kTable) ? nullptr : found;
}

}  // namespace

const LocaleConventions& FindConventions(std::string_view locale_name) {
  const std::string_view territory = locale_name.substr(0, locale_name.find_first_of(".@"));
  if (const auto* found = Find(territory)) return *found;
  if (const auto* found = Find(territory.substr(0, territory.find('_')))) return *found;
  return kTable[0];
}

}  // namespace moxel
