// Reading the records of an accessor the way the module's sampler reads its
// OUTPUT, for the converter's curves and meshes.
#pragma once

#include <algorithm>
#include <cstddef>

#include <oxDAEReadWrite/oxDAEElements_Main_Source.h>

namespace OxDAEConvert {

// Floats per record: the stride, 0 counting as 1.
inline unsigned int RecordStride(const OxDAEReader::oxDAEAccessor* accessor) {
  return accessor ? std::max<unsigned int>(accessor->stride, 1) : 1;
}

// True when the accessor reads a float array.
inline bool HasRecords(const OxDAEReader::oxDAEAccessor* accessor) {
  return accessor && accessor->source;
}

// How many records the accessor counts and its array holds.
inline size_t RecordCount(const OxDAEReader::oxDAEAccessor* accessor) {
  if (!HasRecords(accessor)) return 0;
  const size_t held = accessor->source->floats.size() / RecordStride(accessor);
  return held > accessor->offset ? std::min<size_t>(accessor->count, held - accessor->offset) : 0;
}

// Float j of record i: position (offset + i) * stride + j of the float
// array, 0 outside it.
inline double RecordFloat(const OxDAEReader::oxDAEAccessor* accessor, size_t record,
                          unsigned int j) {
  if (!HasRecords(accessor)) return 0.0;
  const auto& floats = accessor->source->floats;
  const size_t at = (accessor->offset + record) * RecordStride(accessor) + j;
  return at < floats.size() ? floats[at] : 0.0;
}

}  // namespace OxDAEConvert
