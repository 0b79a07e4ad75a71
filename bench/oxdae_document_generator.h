// Deterministic COLLADA 1.4.1 documents and number texts for the benchmarks.
//
// The same options always give the same bytes: the generator draws from its
// own splitmix64 sequence and writes every number with std::to_chars, so the
// output depends neither on the standard library's distributions nor on the
// locale.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace oxdae_bench {

struct DocumentOptions {
  uint64_t bytes = 50'000'000;  // the wanted document size
  uint64_t seed = 1;
};

// Writes a document of about `options.bytes` bytes (within a few percent;
// small requests are padded up to a minimum of a few kilobytes). Returns the
// number of bytes written, or 0 when writing failed.
uint64_t WriteDocument(const DocumentOptions& options, std::FILE* out);

// Writes the document to the file `path`. Returns the number of bytes
// written, or 0 when the file could not be created or written.
uint64_t WriteDocumentFile(const DocumentOptions& options, const std::string& path);

// About `bytes` bytes of white-space separated floats as a <float_array>
// holds them (positions, normals and texture coordinates).
std::string MakeFloatText(size_t bytes, uint64_t seed);

// About `bytes` bytes of white-space separated indices as a <p> holds them.
std::string MakeIndexText(size_t bytes, uint64_t seed);

}  // namespace oxdae_bench
