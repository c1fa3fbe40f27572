// CALLDLL and CALLDLLV: call an exported function of a library with strings, and take a string or a
// list of strings back. Every failure is an Error without text.
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "VLib/src/text/Text.h"
#include "platform/os/Library.h"
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"

namespace kestra {
namespace {

// A library that was asked for once. Kept whether it could be loaded or not, so that a failed load
// is not tried again.
struct LoadedLibrary {
  std::string Name;
  os::NativeLibrary Module;
};

// Process-wide, and never destroyed.
struct LibraryTable {
  std::mutex lock;  // guards the list
  std::list<LoadedLibrary> libraries;
};

os::NativeLibrary FindLibrary(const std::string& name) {
  static auto* pTable = new LibraryTable;
  std::lock_guard lock(pTable->lock);
  for (const LoadedLibrary& library : pTable->libraries) {
    if (EqualsNoCase(library.Name, name)) return library.Module;
  }
  pTable->libraries.push_back({name, os::OpenLibrary(name)});
  return pTable->libraries.back().Module;
}

using Callee = os::ByteString (*)(const char* strings, unsigned int reserved);

// Appends the text of one element to the block of strings. False when the call ends here, with out
// as its value.
bool AppendText(Value& out, const Value& element, std::string& block, bool& result) {
  result = !element.IsError();
  if (element.IsError() || element.IsUndefined() || element.IsAny()) {
    out = element;
    return false;
  }
  block += element.asString();
  block += '\0';
  return true;
}

// The argument texts: a list counts element by element, but a list of lists is refused.
bool GatherTexts(Value& out, const ValueVector& arguments, std::string& block, bool& result) {
  for (size_t i = 0; i < arguments.Count(); ++i) {
    if (!arguments[i].IsVector()) {
      if (!AppendText(out, arguments[i], block, result)) return false;
      continue;
    }
    const ValueVector& elements = arguments[i].asVector();
    if (elements.Count() > 0 && elements[0].IsVector()) {
      result = Fail(out);
      return false;
    }
    for (size_t k = 0; k < elements.Count(); ++k) {
      if (!AppendText(out, elements[k], block, result)) return false;
    }
  }
  return true;
}

// Runs the call of a node: the bytes of its answer. Nothing when the action ends here, with out as
// its value.
std::optional<std::string> Call(Value& out, ParseNode& node, bool& result) {
  std::string library, function;
  for (const auto& [symbol, pText] : {std::pair{2u, &library}, std::pair{4u, &function}}) {
    const Operand read = ReadString(node, out, symbol, *pText);
    if (read == Operand::Ready) continue;
    result = EndOperator(read);
    return std::nullopt;
  }
  result = Child(node, out, 5) && (out.IsVector() || out.IsUndefined() || out.IsAny());
  if (!result || !out.IsVector()) {
    if (!result) FailKeepingMessage(out);
    return std::nullopt;
  }
  const Value arguments = out;
  // The library would be one of this machine, and not of the one that is asked about.
  if (node.Context->Message->IsMachineReadOnly) {
    node.Context->Message->Fail(kErrorWriteProtect);
    result = Fail(out);
    return std::nullopt;
  }
  const auto callee = reinterpret_cast<Callee>(os::FindExport(FindLibrary(library), function));
  std::string block;
  if (!callee) {
    result = Fail(out);
    return std::nullopt;
  }
  if (!GatherTexts(out, arguments.asVector(), block, result)) return std::nullopt;
  // The string's own end is the NUL behind the last one.
  const std::string text = os::LibraryText(block);
  std::optional<std::string> answer = os::CByteString::Take(callee(text.c_str(), 0)).Text();
  if (!answer) result = Fail(out);
  return answer;
}

// A series of strings, each ended by a NUL within the bytes; an empty one behind another ends it.
bool ReadStrings(Value& out, std::string_view bytes) {
  auto list = MakeRef<ValueVector>();
  const bool isSingle = bytes.size() == 1;
  const bool isGood = !isSingle || bytes[0] == '\0';
  for (size_t start = 0; !isSingle && start < bytes.size();) {
    const size_t end = bytes.find('\0', start);
    if (end == std::string_view::npos) return Fail(out);
    if (end == start && start > 0) break;
    Value text;
    text.SetString(std::string(bytes.substr(start, end - start)));
    list->Append(std::move(text));
    start = end + 1;
  }
  out.SetVector(std::move(list));
  return isGood;
}

}  // namespace

bool CallDll(Value& out, ParseNode& node) {
  bool result = false;
  const auto answer = Call(out, node, result);
  if (!answer) return result;
  out.SetString(answer->substr(0, answer->find('\0')));
  return true;
}

bool CallDllV(Value& out, ParseNode& node) {
  bool result = false;
  const auto answer = Call(out, node, result);
  if (!answer) return result;
  return ReadStrings(out, *answer);
}

}  // namespace kestra
