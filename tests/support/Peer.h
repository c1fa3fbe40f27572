// kestra_lock_peer as a second process of a test, on every system.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace kestra::test {

// Runs the program at path with these arguments. It is killed, and gone, when the last owner of
// what this gives lets go. Throws std::runtime_error when it cannot be started.
std::shared_ptr<void> StartPeer(const std::string& path, const std::vector<std::string>& arguments);

}  // namespace kestra::test
