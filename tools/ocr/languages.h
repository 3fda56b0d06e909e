// Languages as Tesseract names them, and what to say where their data are missing.
#ifndef TOOLS_OCR_LANGUAGES_H_
#define TOOLS_OCR_LANGUAGES_H_

#include <string>

namespace sorrelin::tool {

// The list that stands for the languages of the locale.
inline constexpr char kLocaleLanguages[] = "auto";

inline constexpr char kTimeoutText[] =
    "is not recognised within the time (--timeout gives it more)";

// A list such as "deu+eng" from a locale as in LANGUAGE, LC_ALL, LC_MESSAGES and LANG, of which the
// first that is set counts; "eng" where none says anything.
std::string LanguagesOfLocale();

// The list for a single locale such as "de_AT.UTF-8" or a list of them as in "de_AT:en"; empty if
// no language is known by these names.
std::string LanguagesFor(std::string const& locales);

// The list of an option: itself, or that of the locale for "auto".
std::string ResolvedLanguages(std::string const& list);

// What to say without a usable engine.
std::string MissingEngine();

// Problems of a language, with what to install.
std::string MissingLanguage(std::string const& language);
std::string DamagedLanguage(std::string const& language);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_LANGUAGES_H_
