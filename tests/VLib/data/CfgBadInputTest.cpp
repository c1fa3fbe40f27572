// Files that mean harm. They are loaded on a thread with a small stack.
#include <gtest/gtest.h>
#include <zlib.h>

#include <chrono>
#include <functional>
#include <random>
#include <string>

#include "VLib/src/data/CfgNode.h"
#include "VLib/src/data/Compression.h"
#include "VLib/src/data/Scramble.h"
#include "VLib/src/threads/Thread.h"
#include "tests/VLib/data/CfgTrees.h"

namespace kestra {
namespace {

using test::Show;

class CSmallThread final : public CVThread {
 public:
  explicit CSmallThread(std::function<void()> body) : m_body(std::move(body)) {}

 protected:
  void Run() override { m_body(); }

 private:
  std::function<void()> m_body;
};

void OnSmallStack(std::function<void()> body) {
  constexpr size_t kStack = 512 * 1024;
  constexpr uint32_t kTimeOutMs = 60'000;
  const auto thread = MakeRef<CSmallThread>(std::move(body));
  ASSERT_TRUE(thread->Start(kStack));
  EXPECT_TRUE(thread->Stop(kTimeOutMs));
}

std::string Repeated(const std::string& text, size_t count) {
  std::string result;
  for (size_t i = 0; i < count; ++i) result += text;
  return result;
}

TEST(CfgBadInput, SectionsNestedWithoutEnd) {
  OnSmallStack([] {
    constexpr size_t kDepth = 100'000;
    auto root = MakeRef<CfgNode>();
    ASSERT_TRUE(
        root->LoadBytes(Repeated("[s]\nk=v\n", kDepth), "", CfgMode::All, 0, CfgLayout::Cfg));
    size_t depth = 0;
    for (const CfgNode* p = root.get(); !p->Children.empty(); p = p->Children[0].get()) ++depth;
    EXPECT_EQ(depth, kDepth);
    EXPECT_TRUE(root->ReadsBack(0, CfgLayout::Cfg));
    std::string text;
    root->Dump(text, 0, 0, CfgLayout::Cfg);
    EXPECT_LT(text.size(), kDepth * 3 * (kCfgMostIndent + 16));
    CfgNode skipped;
    EXPECT_TRUE(skipped.LoadText(text, 0, CfgLayout::Cfg));
    EXPECT_EQ(skipped.Children.size(), 1u);
    CfgNode own;
    EXPECT_TRUE(own.LoadBytes(std::move(text), "none", CfgMode::OwnKeys, 0, CfgLayout::Cfg));
    EXPECT_EQ(Show(own), "");
  });
}

// The whole of a wide and deep tree goes, but for what somebody else still holds.
TEST(CfgBadInput, TakingATreeApart) {
  Ref<CfgNode> kept;
  OnSmallStack([&kept] {
    auto root = MakeRef<CfgNode>();
    CfgNode* pNode = root.get();
    for (int i = 0; i < 50'000; ++i) {
      for (const char* name : {"a", "b"}) pNode->AddSection(name).AddSection("c");
      pNode = pNode->Children[i % 2].get();
    }
    kept = root->Children[0]->Children[1];
    kept->SetText("k", "v");
  });
  EXPECT_EQ(kept->Name, "a");
  EXPECT_EQ(kept->GetText("k"), "v");
}

std::string WithHeader(const std::string& length, const std::string& stream) {
  return "\xBD\xAC\x9B\x8A" + length + "\x8A\x9B\xAC\xBD" + stream;
}

// The zlib stream of a text, as any other program may make it.
std::string Deflated(const std::string& text) {
  const auto textSize = static_cast<uLong>(text.size());
  uLongf size = compressBound(textSize);
  std::string stream(size, '\0');
  EXPECT_EQ(compress(reinterpret_cast<Bytef*>(stream.data()), &size,
                     reinterpret_cast<const Bytef*>(text.data()), textSize),
            Z_OK);
  stream.resize(size);
  return stream;
}

// Bytes that do not become shorter.
std::string Noise(size_t size) {
  std::mt19937 random(1);
  std::string noise(size, '\0');
  for (char& c : noise) c = static_cast<char>(random());
  return noise;
}

std::string Scrambled(std::string bytes) {
  CTerminationLook never(nullptr);
  EXPECT_TRUE(Scramble(bytes, 5, never));
  return bytes;
}

TEST(CfgBadInput, CompressionHeadersThatLie) {
  CTerminationLook never(nullptr);
  const std::string text = "k=" + std::string(1000, 'v');
  const std::string layer = CompressCfgText(text, never).value();
  const std::string stream = layer.substr(12);
  struct Case {
    std::string layer;
    std::string expected;
  };
  const std::string right = "k=" + std::string(1000, 'v') + ";";
  const std::string right4("\xEA\x03\0\0", 4);
  const Case cases[] = {
      {layer, right},
      {WithHeader(right4, stream), right},
      {layer + "behind the stream", right},
      {WithHeader("\xFF\xFF\xFF\xFF", stream), ""},
      {WithHeader(std::string("\xEB\x03\0\0", 4), stream), ""},
      {WithHeader(std::string("\xE9\x03\0\0", 4), stream), ""},
      {WithHeader(std::string(4, '\0'), stream), ""},
      {WithHeader(right4, stream.substr(0, stream.size() - 1)), ""},
      {WithHeader(right4, stream.substr(0, 1)), ""},
      {WithHeader(right4, "\na=1"), "a=1;"},  // read as the text that it is
      {WithHeader(right4, ""), ""},
  };
  for (const Case& test : cases) {
    CfgNode node;
    EXPECT_TRUE(node.LoadBytes(Scrambled(test.layer), "", CfgMode::All, 5, CfgLayout::Cfg));
    EXPECT_EQ(Show(node), test.expected);
    // Without a key nobody looks for the layer.
    CfgNode plain;
    EXPECT_TRUE(plain.LoadBytes(test.layer, "", CfgMode::All, 0, CfgLayout::Cfg));
    EXPECT_NE(Show(plain), right);
  }
}

// What the text of a small file may come to, as our own writer keeps to it.
TEST(CfgBadInput, CompressionThatIsTooGoodToBeTrue) {
  CTerminationLook never(nullptr);
  constexpr size_t kFree = 1 << 20;
  constexpr size_t kRatio = 64;
  const std::string noise = Noise(100'000);
  struct Case {
    size_t blanks;
    bool isCompressed;
  };
  const Case cases[] = {
      {kFree, true}, {kFree + 1, false}, {kFree * 256, false}, {kFree * 256 + 1, false}};
  for (const Case& test : cases) {
    const std::string text(test.blanks, ' ');
    EXPECT_EQ(CompressCfgText(text, never).has_value(), test.isCompressed) << test.blanks;
  }
  // The same stream, with more and more behind it that makes the layer longer and means nothing.
  const std::string text(2 * kFree, ' ');
  const std::string layer = WithHeader(std::string("\0\0\x20\0", 4), Deflated(text));
  for (const size_t size : {layer.size(), 2 * kFree / kRatio - 1, 2 * kFree / kRatio}) {
    std::string padded = layer;
    padded.resize(size);
    EXPECT_EQ(DecompressCfgText(padded, never).has_value(), size == 2 * kFree / kRatio) << size;
  }
  // Beyond the first MiB a text that is only in part a repetition is compressed.
  const std::string mixed = noise + std::string(2 * kFree, ' ');
  const auto compressed = CompressCfgText(mixed, never);
  ASSERT_TRUE(compressed);
  EXPECT_LT(compressed->size(), noise.size() + mixed.size() / kRatio);
  EXPECT_EQ(DecompressCfgText(*compressed, never), mixed);
}

TEST(CfgBadInput, AnySingleDamageIsReadOrNot) {
  CTerminationLook never(nullptr);
  const std::string layer = CompressCfgText(Repeated("[a]\nkey=value\n", 40), never).value();
  for (size_t i = 0; i < layer.size(); ++i) {
    for (const int bit : {1, 0x80}) {
      std::string damaged = layer;
      damaged[i] = static_cast<char>(damaged[i] ^ bit);
      CfgNode node;
      EXPECT_TRUE(node.LoadBytes(Scrambled(damaged), "", CfgMode::All, 5, CfgLayout::Cfg));
    }
    CfgNode cut;
    cut.LoadBytes(Scrambled(layer.substr(0, i)), "", CfgMode::All, 5, CfgLayout::Cfg);
  }
}

TEST(CfgBadInput, LongLinesAndManyOfThem) {
  struct Case {
    std::string bytes;
    size_t values;
    size_t sections;
  };
  constexpr size_t kLong = 1 << 20;
  const Case cases[] = {
      {std::string(kLong, 'x'), 0, 0},
      {"k=" + std::string(kLong, 'x'), 1, 0},
      {std::string(kLong, ' '), 0, 0},
      {std::string(kLong, '='), 1, 0},
      {std::string(kLong, '['), 0, 0},
      {std::string(kLong, '\0'), 0, 0},
      {std::string(kLong, '\n'), 0, 0},
      {Repeated("[\n", kLong / 2), 0, 0},
      {Repeated("=\n", kLong / 2), kLong / 2, 0},
      {"[" + std::string(kLong, 'x') + "]", 0, 1},
  };
  const auto start = std::chrono::steady_clock::now();
  for (const Case& test : cases) {
    for (const CfgLayout layout : {CfgLayout::Cfg, CfgLayout::Ini}) {
      CfgNode node;
      EXPECT_TRUE(node.LoadBytes(test.bytes, "", CfgMode::All, 0, layout));
      EXPECT_EQ(node.Values.size(), test.values);
      EXPECT_EQ(node.Children.size(), test.sections);
    }
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

}  // namespace
}  // namespace kestra
