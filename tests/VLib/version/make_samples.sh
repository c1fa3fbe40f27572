#!/bin/sh
# Makes the programs that the tests of the version resource read, out of sample.rc. They are kept in
# the tree, as seeds of the fuzzer, since nothing else needs these tools:
#   apt-get install binutils-mingw-w64-x86-64 binutils-mingw-w64-i686
set -e
cd "$(dirname "$0")"
corpus=../../../fuzz/corpus/pe_version
for machine in x86_64:wide i686:narrow; do
  tool=${machine%:*}-w64-mingw32
  $tool-windres --preprocessor=cat sample.rc -O coff -o sample.o
  $tool-ld -shared --strip-all --no-insert-timestamp -o "$corpus/sample_${machine#*:}.dll" sample.o
  chmod 644 "$corpus/sample_${machine#*:}.dll"
done
rm sample.o
