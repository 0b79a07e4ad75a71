#include "oxKernel/oxArchive.h"

#include <zip.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

#include "oxKernel/oxLog.h"
#include "oxKernel/oxXML.h"

namespace OxKernel {

namespace {

// The first buffer for an entry holds what this ratio of its compressed size
// predicts (documents and pictures compress far less), so that a directory
// that lies about an entry's size costs no more memory than the data that
// actually inflates; the buffer doubles from there up to the claimed size.
constexpr uint64_t kExpectedRatio = 16;

// An entry too large for one buffer in this address space.
constexpr uint64_t kLargestEntry = uint64_t{PTRDIFF_MAX} / 2;

std::string_view LibzipText(zip_error_t& error) {
  return zip_error_strerror(&error);
}

std::string EntryName(std::string_view archive, const oxArchive::Entry& entry) {
  return oxConcat("'", archive, "!/", entry.name, "'");
}

}  // namespace

struct oxArchive::Handle {
  zip_t* zip = nullptr;
  ~Handle() {
    if (zip) zip_discard(zip);
  }
};

bool oxArchive::IsTooCompressed(uint64_t size, uint64_t compressedSize) {
  const uint64_t stored = std::max<uint64_t>(compressedSize, 1);
  return size > kRatioCheckedAbove && stored <= UINT64_MAX / kMaxRatio && size > stored * kMaxRatio;
}

bool oxArchive::HasZipSignature(std::string_view bytes) {
  return bytes.starts_with(std::string_view("PK\3\4", 4)) ||
         bytes.starts_with(std::string_view("PK\5\6", 4));
}

oxArchive::oxArchive(std::unique_ptr<Handle> handle, std::string_view name)
    : m_handle(std::move(handle)), m_name(name) {}

oxArchive::~oxArchive() = default;

int oxArchive::OpenFile(std::unique_ptr<oxArchive>& archive, const oxString& path,
                        std::string_view name) {
  archive.reset();
  // The first bytes tell a damaged archive from a file that is no archive.
  char lead[4] = {};
  size_t leadSize = 0;
  if (std::FILE* file = std::fopen(path.c_str(), "rb")) {
    leadSize = std::fread(lead, 1, sizeof lead, file);
    std::fclose(file);
  } else {
    OX_LOG(kLogError, oxConcat("cannot open '", name, "': ", std::strerror(errno)));
    return kXMLCannotOpen;
  }
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* source = zip_source_file_create(path.c_str(), 0, -1, &error);
  if (!source) {
    OX_LOG(kLogError, oxConcat("cannot open '", name, "': ", LibzipText(error)));
    zip_error_fini(&error);
    return kXMLCannotOpen;
  }
  zip_error_fini(&error);
  return Open(archive, source, std::string_view(lead, leadSize), name);
}

int oxArchive::OpenMemory(std::unique_ptr<oxArchive>& archive, std::string_view bytes,
                          std::string_view name) {
  archive.reset();
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
  zip_error_fini(&error);
  if (!source) throw std::bad_alloc();
  return Open(archive, source, bytes, name);
}

int oxArchive::Open(std::unique_ptr<oxArchive>& archive, void* opaque, std::string_view lead,
                    std::string_view name) {
  auto* source = static_cast<zip_source_t*>(opaque);
  zip_error_t error;
  zip_error_init(&error);
  auto handle = std::make_unique<Handle>();
  handle->zip = zip_open_from_source(source, ZIP_RDONLY, &error);
  if (!handle->zip) {
    zip_source_free(source);
    const bool signature = HasZipSignature(lead);
    if (signature) {
      // Without the directory at its end, libzip calls the file no archive.
      const std::string_view why = zip_error_code_zip(&error) == ZIP_ER_NOZIP
                                       ? std::string_view("its central directory is missing")
                                       : LibzipText(error);
      OX_LOG(kLogError, oxConcat("'", name, "' is a damaged or truncated zip archive: ", why));
    } else {
      OX_LOG(kLogError, oxConcat("'", name, "' is not a zip archive"));
    }
    zip_error_fini(&error);
    return signature ? kArchiveDamaged : kArchiveNotZip;
  }
  zip_error_fini(&error);
  archive.reset(new oxArchive(std::move(handle), name));
  const zip_int64_t count = zip_get_num_entries(archive->m_handle->zip, 0);
  for (zip_int64_t i = 0; i < count; ++i) {
    zip_stat_t stat;
    if (zip_stat_index(archive->m_handle->zip, static_cast<zip_uint64_t>(i), 0, &stat) != 0 ||
        !(stat.valid & ZIP_STAT_NAME))
      continue;
    Entry entry;
    entry.name = stat.name;
    entry.size = (stat.valid & ZIP_STAT_SIZE) ? stat.size : 0;
    entry.compressedSize = (stat.valid & ZIP_STAT_COMP_SIZE) ? stat.comp_size : 0;
    entry.encrypted =
        (stat.valid & ZIP_STAT_ENCRYPTION_METHOD) && stat.encryption_method != ZIP_EM_NONE;
    entry.index = static_cast<uint64_t>(i);
    archive->m_entries.push_back(std::move(entry));
  }
  return kArchiveOk;
}

const oxArchive::Entry* oxArchive::Find(std::string_view name) const {
  const auto it = std::find_if(m_entries.begin(), m_entries.end(),
                               [name](const Entry& e) { return e.name == name; });
  return it == m_entries.end() ? nullptr : &*it;
}

int oxArchive::Read(const Entry& entry, oxArray<char>& bytes) const {
  bytes.clear();
  if (entry.encrypted) {
    OX_LOG(kLogError, oxConcat(EntryName(m_name.View(), entry),
                               " is encrypted; encrypted entries are not read"));
    return kArchiveEncrypted;
  }
  if (IsTooCompressed(entry.size, entry.compressedSize)) {
    OX_LOG(kLogError, oxConcat(EntryName(m_name.View(), entry), " would inflate ",
                               entry.compressedSize, " bytes to ", entry.size, ", more than ",
                               kMaxRatio, " times as many; it is not read"));
    return kArchiveTooCompressed;
  }
  if (entry.size > kLargestEntry) throw std::bad_alloc();
  zip_file_t* file = zip_fopen_index(m_handle->zip, entry.index, 0);
  if (!file) {
    OX_LOG(kLogError, oxConcat("cannot inflate ", EntryName(m_name.View(), entry), ": ",
                               zip_strerror(m_handle->zip)));
    return kArchiveDamaged;
  }
  struct Closer {
    zip_file_t* file;
    ~Closer() { zip_fclose(file); }
  } closer{file};
  const auto fail = [&](std::string_view why) {
    OX_LOG(kLogError, oxConcat("cannot inflate ", EntryName(m_name.View(), entry), ": ", why));
    bytes.clear();
    return kArchiveDamaged;
  };
  uint64_t capacity =
      std::min(entry.size, entry.compressedSize * kExpectedRatio + kLargeBlockBytes);
  bytes.resize(capacity + 1);
  uint64_t filled = 0;
  while (filled < entry.size) {
    if (filled == capacity) {
      capacity = std::min(entry.size, capacity * 2);
      bytes.resize(capacity + 1);
    }
    const zip_int64_t n = zip_fread(file, bytes.data() + filled, capacity - filled);
    if (n < 0) return fail(zip_file_strerror(file));
    if (n == 0) break;
    filled += static_cast<uint64_t>(n);
  }
  if (filled != entry.size)
    return fail(
        oxConcat("it holds ", filled, " bytes, not the ", entry.size, " its archive lists"));
  // One read past the claimed end: the checksum is checked when the stream
  // ends, and data beyond the claimed size shows up here.
  char beyond = 0;
  const zip_int64_t n = zip_fread(file, &beyond, 1);
  if (n < 0) return fail(zip_file_strerror(file));
  if (n > 0)
    return fail(oxConcat("it holds more than the ", entry.size, " bytes its archive lists"));
  bytes.resize(filled + 1);
  return kArchiveOk;
}

}  // namespace OxKernel
