// Puts right, in a copy of a hive, what hivex reads nothing at all without. The layout is that of
// the "Windows registry file format specification" by M. Suhanov.
#pragma once

#include <string>

namespace kestra::image {

// Makes the checksum of the hive's first bytes (512 are enough) right. True if it was wrong.
bool RepairHeaderChecksum(std::string& head);

// Makes the heads of all bins, which the cells lie in, say where they begin and end. Of a bin whose
// own head is lost the next sound one is the end. What stands behind a cell whose size makes no
// sense, up to the end of its bin, becomes free. True if anything was wrong. Left half-done when
// the thread's work is terminated.
bool RepairBins(std::string& hive);

}  // namespace kestra::image
