// CProgress: what a query is doing, for whoever looks from another thread.
//
//   CFillProgress filling(message, "Files");           // the engine: what is filled
//   message.TellPlace("/usr/share", 312);              // the module: where it is, 312 more done
//   message.TellAmount(17, 240);                       // or how far
//
// Telling costs an atomic addition; the text is taken over every few milliseconds only.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/base/Ref.h"

namespace kestra {

// Any thread.
class CProgress : public CCounted<CProgress> {
 public:
  // What is told of, and how far it is.
  struct Told {
    std::string what;  // empty: nothing is told
    uint64_t done = 0;
    uint64_t total = 0;
  };
  // What begins: "Processes", "FILES.FILE". Answers what was told of until then.
  Told Begin(std::string_view what);
  // Its end: what was told of before is again, as far as it was, or nothing.
  void End(Told before);

  void TellPlace(std::string_view place, uint64_t more);
  void TellAmount(uint64_t done, uint64_t total);

  // False while there is nothing to tell. text is "Files: /usr/share"; total is 0 where it is not
  // known.
  bool Read(std::string& text, uint64_t& done, uint64_t& total) const;

 private:
  std::atomic<uint64_t> m_done{0};
  std::atomic<uint64_t> m_total{0};
  std::atomic<uint32_t> m_lastTold{0};  // tick count when the place was taken over last
  mutable std::mutex m_lock;            // guards what follows
  std::string m_what;                   // empty: nothing is told
  std::string m_place;
};

}  // namespace kestra
