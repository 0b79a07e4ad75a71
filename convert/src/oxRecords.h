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

// The records of one accessor, with what a lookup needs taken once: for
// loops over many records. Float j of record i is the float at position
// (offset + i) * stride + j of the array, 0 outside it.
class oxRecords {
 public:
  explicit oxRecords(const OxDAEReader::oxDAEAccessor* accessor)
      : m_stride(RecordStride(accessor)) {
    if (!HasRecords(accessor)) return;
    m_floats = accessor->source->floats.data();
    m_size = accessor->source->floats.size();
    m_first = static_cast<size_t>(accessor->offset) * m_stride;
  }

  double operator()(size_t record, unsigned int j) const {
    const size_t at = m_first + record * m_stride + j;
    return at < m_size ? m_floats[at] : 0.0;
  }

 private:
  const float* m_floats = nullptr;
  size_t m_size = 0;
  size_t m_stride;
  size_t m_first = 0;
};

// Float j of record i (see oxRecords).
inline double RecordFloat(const OxDAEReader::oxDAEAccessor* accessor, size_t record,
                          unsigned int j) {
  return oxRecords(accessor)(record, j);
}

}  // namespace OxDAEConvert
