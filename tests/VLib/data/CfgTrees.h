// Trees of data files for tests: shown as one line, and made at random.
#pragma once

#include <random>
#include <string>

#include "VLib/src/data/CfgNode.h"

namespace kestra::test {

// A file of a fake machine.
constexpr char kCfgPath[] = "C:\\data.cfg";

// "key=text;" for each value, then "[name|...]" for each section. Of a root its content alone.
std::string Show(const CfgNode& node);
// The same content, also where they would show alike.
bool IsSame(const CfgNode& a, const CfgNode& b);

// The same seed gives the same trees on every system.
class CTreeGenerator {
 public:
  explicit CTreeGenerator(uint32_t seed) : m_random(seed) {}

  // With names, keys and texts that the format can hold in either layout, or with any bytes.
  Ref<CfgNode> Tree(size_t depth, bool isPlain);
  uint32_t Key();
  size_t Number(size_t count) { return m_random() % count; }

 private:
  std::string Word(bool isPlain);
  void Fill(CfgNode& node, size_t depth, bool isPlain);

  std::mt19937 m_random;
};

}  // namespace kestra::test
