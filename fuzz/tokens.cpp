// A text cut into tokens: they lie in it one behind the other, and written with a blank between
// them they are cut in the same way.
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/support/Require.h"
#include "query/parse/Tokeniser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace kestra;
  using fuzz::Require;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  TokenList tokens;
  size_t fault = 0;
  if (!Tokenise(text, tokens, &fault)) {
    Require(tokens.empty() && fault < size);
    return 0;
  }
  const char* pEnd = text.data();
  std::string apart;
  for (const Token& token : tokens) {
    Require(!token.text.empty() && token.text.data() >= pEnd);
    pEnd = token.text.data() + token.text.size();
    apart.append(token.text) += ' ';
  }
  Require(pEnd <= text.data() + size);
  TokenList again;
  Require(Tokenise(apart, again) && again.size() == tokens.size());
  for (size_t i = 0; i < tokens.size(); ++i) {
    Require(again[i].text == tokens[i].text && again[i].keyword == tokens[i].keyword);
  }
  return 0;
}
