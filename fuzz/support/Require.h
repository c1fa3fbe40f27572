// What a fuzz entry demands beyond not crashing.
#pragma once

namespace kestra::fuzz {

// Ends the program where something that must hold does not; while memory runs out (replay.cpp)
// only the input, since then nothing more is promised than an error.
void Require(bool holds);

}  // namespace kestra::fuzz
