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
  // The joint influences of the skin controller of the first mesh: at most
  // this many, and no more than half of `bytes` can hold (a small
  // document gets a small skin, or none).
  uint32_t skinInfluences = 1'000'000;
  // 0 (the default): one skin, and about one mesh per 8 MB, three to 24 of
  // them, so that a larger document has larger meshes, whose indices take
  // more digits. Otherwise the document grows by more pieces rather than
  // larger ones: meshes and skins of about this many bytes each, so that
  // documents of every size hold numbers of the same lengths in the same
  // proportions.
  uint64_t pieceBytes = 0;
};

// The options of the scaling benchmark's documents: a skin that grows with
// the document (1,000,000 influences in 50 MB), and meshes and skins of
// 4 MB each, so that every size has the same mix of content. Were the
// pieces to grow with the document, so would their indices: the 500 MB
// document would hold 8-digit indices where the 10 MB one holds 6-digit
// ones, and 14% fewer numbers per megabyte.
DocumentOptions ScalingDocument(uint64_t bytes, uint64_t seed);

// Writes a document of about `options.bytes` bytes (within a few percent;
// small requests are padded up to a minimum of a few kilobytes): meshes,
// their materials and scene, and a skin controller. Returns the number of
// bytes written, or 0 when writing failed.
uint64_t WriteDocument(const DocumentOptions& options, std::FILE* out);

// Writes a document that holds one small mesh and a skin controller of it
// with `influences` joint influences (four a vertex on average, 64 joints,
// one weight per influence), to time the controller reader on its own.
// Returns the number of bytes written, or 0 when the file could not be
// created or written.
uint64_t WriteSkinDocumentFile(uint32_t influences, uint64_t seed, const std::string& path);

// Writes the document to the file `path`. Returns the number of bytes
// written, or 0 when the file could not be created or written.
uint64_t WriteDocumentFile(const DocumentOptions& options, const std::string& path);

// About `bytes` bytes of white-space separated floats as a <float_array>
// holds them (positions, normals and texture coordinates).
std::string MakeFloatText(size_t bytes, uint64_t seed);

// About `bytes` bytes of white-space separated indices as a <p> holds them.
std::string MakeIndexText(size_t bytes, uint64_t seed);

}  // namespace oxdae_bench
