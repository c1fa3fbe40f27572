// A pattern of LIKE that is tried on many texts.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kestra {

class CLikePattern {
 public:
  explicit CLikePattern(std::string_view pattern);
  // As MatchesUnlessStopped without regard to case and without escape. context is asked whether it
  // was cancelled.
  template <class Context>
  std::optional<bool> Matches(std::string_view text, const Context& context) const {
    if (const auto known = MatchesAtOnce(text)) return known;
    return MatchesSlowly(text, [&] { return context.IsCancelled(); });
  }

 private:
  enum class Form { AtBegin, AtEnd, Other };

  // Nothing where the form does not decide it.
  std::optional<bool> MatchesAtOnce(std::string_view text) const;
  std::optional<bool> MatchesSlowly(std::string_view text, const std::function<bool()>& stop) const;

  const std::string m_pattern;
  Form m_form = Form::Other;
  std::string m_word;  // in lower case
};

}  // namespace kestra
