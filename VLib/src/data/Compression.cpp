#include "VLib/src/data/Compression.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <new>

namespace kestra {
namespace {

constexpr size_t kHeader = 12;
constexpr uint32_t kFirstMagic = 0x8A9BACBD;
constexpr uint32_t kSecondMagic = 0xBDAC9B8A;
constexpr size_t kChunk = 1 << 14;

void AppendNumber(std::string& bytes, size_t number) {
  for (int shift = 0; shift < 32; shift += 8)
    bytes.push_back(static_cast<char>((number >> shift) & 0xFF));
}

uint32_t NumberAt(std::string_view bytes, size_t offset) {
  uint32_t number = 0;
  for (size_t i = 4; i-- > 0;) number = number << 8 | static_cast<uint8_t>(bytes[offset + i]);
  return number;
}

// A zlib stream in one direction. Input is given and output taken in chunks, so that the work can
// be ended, and so that nothing is sized by what a file claims.
template <int (*kStep)(z_stream*, int), int (*kEnd)(z_stream*)>
class CStream {
 public:
  CStream() = default;
  ~CStream() { kEnd(&m_stream); }
  CStream(const CStream&) = delete;
  CStream& operator=(const CStream&) = delete;
  z_stream* Get() { return &m_stream; }

  // Appends what becomes of the input; false unless the stream comes to its end within limit bytes.
  bool Run(std::string_view input, size_t limit, std::string& out, CTerminationLook& termination) {
    char buffer[kChunk];
    int status = Z_OK;
    while (status != Z_STREAM_END) {
      if (m_stream.avail_in == 0) Feed(input);
      m_stream.next_out = reinterpret_cast<Bytef*>(buffer);
      m_stream.avail_out = sizeof buffer;
      status = kStep(&m_stream, input.empty() ? Z_FINISH : Z_NO_FLUSH);
      if (status == Z_MEM_ERROR) throw std::bad_alloc();
      const size_t made = sizeof buffer - m_stream.avail_out;
      // Z_BUF_ERROR is no fault while there is more input, or more output to be fetched.
      const bool isStuck = status == Z_BUF_ERROR && made == 0 && input.empty();
      if (isStuck || (status < 0 && status != Z_BUF_ERROR) || status == Z_NEED_DICT) return false;
      if (made > limit - out.size()) return false;
      out.append(buffer, made);
      if (termination.IsOver(kChunk)) return false;
    }
    return true;
  }

 private:
  void Feed(std::string_view& input) {
    const size_t size = std::min(input.size(), kChunk);
    m_stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
    m_stream.avail_in = static_cast<uInt>(size);
    input.remove_prefix(size);
  }

  z_stream m_stream{};
};

}  // namespace

std::optional<std::string> CompressCfgText(std::string_view text, CTerminationLook& termination) {
  if (text.size() <= kHeader || text.size() > LargestTextOf(text.size())) return std::nullopt;
  CStream<deflate, deflateEnd> stream;
  if (deflateInit(stream.Get(), Z_DEFAULT_COMPRESSION) != Z_OK) return std::nullopt;
  std::string layer;
  AppendNumber(layer, kFirstMagic);
  AppendNumber(layer, text.size());
  AppendNumber(layer, kSecondMagic);
  const size_t shorter = text.size() - 1;
  if (!stream.Run(text, shorter, layer, termination)) return std::nullopt;
  if (text.size() > LargestTextOf(layer.size())) return std::nullopt;
  return layer;
}

bool HasCompressionHeader(std::string_view bytes) {
  return bytes.size() > kHeader && NumberAt(bytes, 0) == kFirstMagic &&
         NumberAt(bytes, 8) == kSecondMagic;
}

std::optional<std::string> DecompressCfgText(std::string_view bytes,
                                             CTerminationLook& termination) {
  if (!HasCompressionHeader(bytes)) return std::nullopt;
  const size_t stated = NumberAt(bytes, 4);
  if (stated > LargestTextOf(bytes.size())) return std::nullopt;
  CStream<inflate, inflateEnd> stream;
  if (inflateInit(stream.Get()) != Z_OK) throw std::bad_alloc();
  std::string text;
  if (!stream.Run(bytes.substr(kHeader), stated, text, termination)) return std::nullopt;
  if (text.size() != stated) return std::nullopt;
  return text;
}

}  // namespace kestra
