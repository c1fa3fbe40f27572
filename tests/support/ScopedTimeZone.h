// Sets the process's time zone for a scope. Only while no other thread reads it.
#pragma once

#include <optional>
#include <string>

namespace kestra::test {

class CScopedTimeZone {
 public:
  // By the names of the time zone database, such as "America/New_York".
  explicit CScopedTimeZone(const std::string& zone);
  ~CScopedTimeZone();
  CScopedTimeZone(const CScopedTimeZone&) = delete;
  CScopedTimeZone& operator=(const CScopedTimeZone&) = delete;

 private:
  std::optional<std::string> m_former;
};

}  // namespace kestra::test
