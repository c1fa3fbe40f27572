// The memory of a process with its environment block and parameters, as one caller finds it.
#pragma once

#include <cstdint>
#include <string>

#include "tests/support/FakeWindowsProcesses.h"

namespace kestra::test {

// Who looks at whom. Only Across goes by the functions for that.
enum class BlockView { Wide, NarrowFromWide, Narrow, Across };

struct BlockTexts {
  std::string imagePath{};
  std::string commandLine{};
  std::string windowTitle{};
};

constexpr uint64_t kBlockAddress = 0x7FFD0000;
constexpr uint64_t kParametersAddress = 0x20000;
constexpr uint64_t kTextsAddress = 0x30000;

// Gives the process a block that is looked at so.
inline void PutBlock(FakeWindowsProcess& process, BlockView view, const BlockTexts& texts) {
  const bool isWide = view == BlockView::Wide || view == BlockView::Across;
  const size_t pointer = isWide ? 8 : 4;
  process.isRedirected = view == BlockView::NarrowFromWide;
  std::string basic;
  StoreLittle(basic, pointer, pointer, kBlockAddress);
  basic.resize(isWide ? 0x30 : 0x18, '\0');
  std::string narrowBlock;
  StoreLittle(narrowBlock, 0, 8, kBlockAddress);
  if (view == BlockView::NarrowFromWide) {
    process.information[kProcessWow64Information] = narrowBlock;
  } else {
    (view == BlockView::Across ? process.information64
                               : process.information)[kProcessBasicInformation] = basic;
  }

  std::string& block = process.memory[kBlockAddress];
  block.assign(0x1D8, '\0');
  StoreLittle(block, isWide ? 0x20 : 0x10, pointer, kParametersAddress);
  std::string& parameters = process.memory[kParametersAddress];
  parameters.assign(isWide ? 0x2C8 : 0x290, '\0');
  std::string& memory = process.memory[kTextsAddress];
  memory.clear();
  const uint64_t offsets[] = {isWide ? 0x60u : 0x38u, isWide ? 0x70u : 0x40u,
                              isWide ? 0xB0u : 0x70u};
  const std::string* const all[] = {&texts.imagePath, &texts.commandLine, &texts.windowTitle};
  for (size_t i = 0; i < 3; ++i) {
    const std::string bytes = Utf16Bytes(*all[i]);
    StoreLittle(parameters, offsets[i], 2, bytes.size());
    StoreLittle(parameters, offsets[i] + pointer, pointer, kTextsAddress + memory.size());
    memory += bytes + std::string(2, '\0');
  }
}

}  // namespace kestra::test
