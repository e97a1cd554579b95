#!/bin/bash -eu
# Builds the library's fuzzer by the conventions of OSS-Fuzz, which sets the compilers, their flags,
# LIB_FUZZING_ENGINE, SRC, OUT and WORK. The file readers are fuzzed by ./dev fuzz: what they are
# made of, libpng, libjpeg and libtiff, has OSS-Fuzz projects of its own.
cmake -S "$SRC/ombrilo" -B "$WORK/ombrilo" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DOMBRILO_FUZZ=ON -DOMBRILO_FUZZING_ENGINE="$LIB_FUZZING_ENGINE" \
  -DOMBRILO_TOOLS=OFF -DOMBRILO_TESTS=OFF
cmake --build "$WORK/ombrilo" --target fuzz_library
cp "$WORK/ombrilo/fuzz_library" "$OUT/"
zip -q -j "$OUT/fuzz_library_seed_corpus.zip" "$SRC"/ombrilo/fuzz/seeds/library/*
