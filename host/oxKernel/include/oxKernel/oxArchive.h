// oxArchive: a zip archive opened for reading, from a file or from bytes the
// caller holds in memory (libzip underneath).
//
// The archive lists its entries once when opened and inflates one entry at a
// time on request, into an oxArray. Nothing is ever written to disk, so an
// entry name is only a key: a name such as "../x" cannot reach a file outside
// the archive. Errors are logged (kLogError) with the archive's name and, for
// an entry, "NAME!/ENTRY"; the functions return one of oxArchiveResult.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "oxKernel/oxContainers.h"
#include "oxKernel/oxString.h"

namespace OxKernel {

// Results of opening and reading archives (0 is success; kXMLCannotOpen, from
// oxXML.h, when the file cannot be opened at all).
enum oxArchiveResult : int {
  kArchiveOk = 0,
  kArchiveNotZip = -40,         // the bytes do not start like a zip archive
  kArchiveDamaged = -41,        // truncated or inconsistent; an entry fails to inflate
  kArchiveEncrypted = -42,      // the entry is encrypted (no password is ever tried)
  kArchiveTooCompressed = -43,  // the entry inflates beyond the bound of IsTooCompressed
};

class oxArchive {
 public:
  // One entry as listed by the archive's central directory.
  struct Entry {
    oxString name;                // as stored: "/"-separated, not %-decoded
    uint64_t size = 0;            // uncompressed bytes, as the directory claims
    uint64_t compressedSize = 0;  // stored bytes
    bool encrypted = false;
    uint64_t index = 0;  // position in the central directory
  };

  // Entries larger than this are checked against the compression ratio.
  static constexpr uint64_t kRatioCheckedAbove = uint64_t{1} << 30;
  static constexpr uint64_t kMaxRatio = 1000;

  // True for an entry that claims more than kRatioCheckedAbove bytes at more
  // than kMaxRatio times its compressed size (a compressed size of 0 counts as
  // 1 byte): a "zip bomb", refused before anything is inflated. Honest large
  // documents compress far less than that.
  static bool IsTooCompressed(uint64_t size, uint64_t compressedSize);

  // True when `bytes` start with a zip signature: a local file header, or the
  // end record of an empty archive.
  static bool HasZipSignature(std::string_view bytes);

  // Opens the archive at the local path `path`; `name` names it in messages.
  // Sets `archive` and returns 0, or logs why and returns kXMLCannotOpen,
  // kArchiveNotZip or kArchiveDamaged with `archive` null.
  static int OpenFile(std::unique_ptr<oxArchive>& archive, const oxString& path,
                      std::string_view name);
  // The same for an archive held in memory. The bytes are not copied: they
  // must outlive the archive.
  static int OpenMemory(std::unique_ptr<oxArchive>& archive, std::string_view bytes,
                        std::string_view name);

  ~oxArchive();
  oxArchive(const oxArchive&) = delete;
  oxArchive& operator=(const oxArchive&) = delete;

  std::string_view GetName() const { return m_name.View(); }
  // The entries in central-directory order (folders included, as listed).
  const oxArray<Entry>& GetEntries() const { return m_entries; }
  // The first entry named exactly `name`, or null.
  const Entry* Find(std::string_view name) const;

  // Inflates `entry` into `bytes`: its size plus one spare byte (so that a
  // parser can work on the text in place), of which the first `entry.size`
  // hold the entry. Returns 0, kArchiveEncrypted or kArchiveTooCompressed
  // (refused before reading), or kArchiveDamaged when the data does not
  // inflate to the size and checksum the directory claims. Running out of
  // memory throws std::bad_alloc.
  int Read(const Entry& entry, oxArray<char>& bytes) const;

 private:
  struct Handle;
  oxArchive(std::unique_ptr<Handle> handle, std::string_view name);
  static int Open(std::unique_ptr<oxArchive>& archive, void* source, std::string_view lead,
                  std::string_view name);

  std::unique_ptr<Handle> m_handle;
  oxString m_name;
  oxArray<Entry> m_entries;
};

}  // namespace OxKernel
