// ISO 639-1 codes of locales, and the names of Tesseract's data for them.
#include "tools/ocr/languages.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "tools/system/remedies.h"

namespace sorrelin::tool {
namespace {

constexpr char kFallback[] = "eng";

// Chinese and Serbian depend on the country or script, and come first.
constexpr std::pair<std::string_view, std::string_view> kLanguages[] = {{"zh_TW", "chi_tra"},
                                                                        {"zh_HK", "chi_tra"},
                                                                        {"zh_MO", "chi_tra"},
                                                                        {"sr_RS@latin", "srp_latn"},
                                                                        {"sr@latin", "srp_latn"},
                                                                        {"af", "afr"},
                                                                        {"am", "amh"},
                                                                        {"ar", "ara"},
                                                                        {"as", "asm"},
                                                                        {"az", "aze"},
                                                                        {"be", "bel"},
                                                                        {"bg", "bul"},
                                                                        {"bn", "ben"},
                                                                        {"bo", "bod"},
                                                                        {"br", "bre"},
                                                                        {"bs", "bos"},
                                                                        {"ca", "cat"},
                                                                        {"cs", "ces"},
                                                                        {"cy", "cym"},
                                                                        {"da", "dan"},
                                                                        {"de", "deu"},
                                                                        {"dv", "div"},
                                                                        {"dz", "dzo"},
                                                                        {"el", "ell"},
                                                                        {"en", "eng"},
                                                                        {"eo", "epo"},
                                                                        {"es", "spa"},
                                                                        {"et", "est"},
                                                                        {"eu", "eus"},
                                                                        {"fa", "fas"},
                                                                        {"fi", "fin"},
                                                                        {"fil", "fil"},
                                                                        {"fo", "fao"},
                                                                        {"fr", "fra"},
                                                                        {"fy", "fry"},
                                                                        {"ga", "gle"},
                                                                        {"gd", "gla"},
                                                                        {"gl", "glg"},
                                                                        {"gu", "guj"},
                                                                        {"he", "heb"},
                                                                        {"hi", "hin"},
                                                                        {"hr", "hrv"},
                                                                        {"ht", "hat"},
                                                                        {"hu", "hun"},
                                                                        {"hy", "hye"},
                                                                        {"id", "ind"},
                                                                        {"is", "isl"},
                                                                        {"it", "ita"},
                                                                        {"iu", "iku"},
                                                                        {"ja", "jpn"},
                                                                        {"jv", "jav"},
                                                                        {"ka", "kat"},
                                                                        {"kk", "kaz"},
                                                                        {"km", "khm"},
                                                                        {"kn", "kan"},
                                                                        {"ko", "kor"},
                                                                        {"ku", "kmr"},
                                                                        {"ky", "kir"},
                                                                        {"la", "lat"},
                                                                        {"lb", "ltz"},
                                                                        {"lo", "lao"},
                                                                        {"lt", "lit"},
                                                                        {"lv", "lav"},
                                                                        {"mi", "mri"},
                                                                        {"mk", "mkd"},
                                                                        {"ml", "mal"},
                                                                        {"mn", "mon"},
                                                                        {"mr", "mar"},
                                                                        {"ms", "msa"},
                                                                        {"mt", "mlt"},
                                                                        {"my", "mya"},
                                                                        {"nb", "nor"},
                                                                        {"ne", "nep"},
                                                                        {"nl", "nld"},
                                                                        {"nn", "nor"},
                                                                        {"no", "nor"},
                                                                        {"oc", "oci"},
                                                                        {"or", "ori"},
                                                                        {"pa", "pan"},
                                                                        {"pl", "pol"},
                                                                        {"ps", "pus"},
                                                                        {"pt", "por"},
                                                                        {"qu", "que"},
                                                                        {"ro", "ron"},
                                                                        {"ru", "rus"},
                                                                        {"sa", "san"},
                                                                        {"sd", "snd"},
                                                                        {"si", "sin"},
                                                                        {"sk", "slk"},
                                                                        {"sl", "slv"},
                                                                        {"sq", "sqi"},
                                                                        {"sr", "srp"},
                                                                        {"su", "sun"},
                                                                        {"sv", "swe"},
                                                                        {"sw", "swa"},
                                                                        {"ta", "tam"},
                                                                        {"te", "tel"},
                                                                        {"tg", "tgk"},
                                                                        {"th", "tha"},
                                                                        {"ti", "tir"},
                                                                        {"to", "ton"},
                                                                        {"tr", "tur"},
                                                                        {"tt", "tat"},
                                                                        {"ug", "uig"},
                                                                        {"uk", "ukr"},
                                                                        {"ur", "urd"},
                                                                        {"uz", "uzb"},
                                                                        {"vi", "vie"},
                                                                        {"yi", "yid"},
                                                                        {"yo", "yor"},
                                                                        {"zh", "chi_sim"}};

// "de_AT.UTF-8@euro" is "de_AT@euro" here.
std::string WithoutEncoding(std::string_view locale) {
  size_t const dot = std::min(locale.find('.'), locale.size());
  size_t const modifier = std::min(locale.find('@', dot), locale.size());
  return std::string(locale.substr(0, dot)).append(locale.substr(modifier));
}

std::string_view LanguageOf(std::string_view locale) {
  std::string const name = WithoutEncoding(locale);
  std::string_view const language = std::string_view(name).substr(0, name.find_first_of("_@"));
  for (std::string_view const candidate : {std::string_view(name), language}) {
    for (auto const& [code, data] : kLanguages) {
      if (code == candidate) return data;
    }
  }
  return {};
}

}  // namespace

std::string LanguagesFor(std::string const& locales) {
  std::string list;
  for (size_t start = 0; start <= locales.size();) {
    size_t const end = std::min(locales.find(':', start), locales.size());
    std::string const language(LanguageOf(std::string_view(locales).substr(start, end - start)));
    bool const is_new = ("+" + list + "+").find("+" + language + "+") == std::string::npos;
    if (!language.empty() && is_new) list += (list.empty() ? "" : "+") + language;
    start = end + 1;
  }
  return list;
}

std::string LanguagesOfLocale() {
  for (char const* const name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
    char const* const value = std::getenv(name);
    if (value == nullptr || *value == '\0') continue;
    std::string const list = LanguagesFor(value);
    return list.empty() ? kFallback : list;
  }
  std::string const list = LanguagesFor(UserLocale());
  return list.empty() ? kFallback : list;
}

std::string ResolvedLanguages(std::string const& list) {
  return list == kLocaleLanguages ? LanguagesOfLocale() : list;
}

std::string MissingEngine() {
  return "the OCR engine " + LibraryFile("Averna.dll") +
         " is missing or unusable: " + InstallRemedy("sorrelin-ocr");
}

std::string MissingLanguage(std::string const& language) {
  return "Tesseract's data for \"" + language + "\" are not installed (" +
         LanguageRemedy(language, false) + ")";
}

std::string DamagedLanguage(std::string const& language) {
  return "Tesseract's data for \"" + language + "\" cannot be loaded: they are damaged (" +
         LanguageRemedy(language, true) + ")";
}

}  // namespace sorrelin::tool
