// The host's zip reader: listing, inflating, and refusing what it must not
// inflate. Every archive is made here with libzip from bytes written here.
#include <oxKernel/oxArchive.h>
#include <oxKernel/oxXML.h>

#include "oxTestSupport.h"

using OxKernel::oxArchive;
using oxtest::ArchiveEntry;
using oxtest::Error;
using oxtest::LogCapture;
using oxtest::MakeArchive;

namespace {

std::string Text(const OxKernel::oxArray<char>& bytes) {
  return bytes.empty() ? std::string() : std::string(bytes.data(), bytes.size() - 1);
}

}  // namespace

TEST(HostArchive, RatioIsCheckedOnlyBeyondOneGibibyte) {
  constexpr uint64_t kGiB = uint64_t{1} << 30;
  EXPECT_FALSE(oxArchive::IsTooCompressed(kGiB, 1));
  EXPECT_TRUE(oxArchive::IsTooCompressed(kGiB + 1, 1));
  EXPECT_TRUE(oxArchive::IsTooCompressed(kGiB + 1, 0));
}

TEST(HostArchive, RatioOfExactlyAThousandIsAllowed) {
  constexpr uint64_t kStored = 2'000'000;
  EXPECT_FALSE(oxArchive::IsTooCompressed(kStored * 1000, kStored));
  EXPECT_TRUE(oxArchive::IsTooCompressed(kStored * 1000 + 1, kStored));
  EXPECT_FALSE(oxArchive::IsTooCompressed(UINT64_MAX, UINT64_MAX / 999));
}

TEST(HostArchive, SignaturesOfAnEntryAndOfAnEmptyArchive) {
  EXPECT_TRUE(oxArchive::HasZipSignature(std::string_view("PK\3\4rest", 8)));
  EXPECT_TRUE(oxArchive::HasZipSignature(std::string_view("PK\5\6", 4)));
  EXPECT_FALSE(oxArchive::HasZipSignature(std::string_view("PK\1\2", 4)));
  EXPECT_FALSE(oxArchive::HasZipSignature("PK"));
  EXPECT_FALSE(oxArchive::HasZipSignature("<COLLADA/>"));
}

TEST(HostArchive, ListsEntriesInOrderAndInflatesThem) {
  const std::string big(100000, 'a');
  const std::string zip = MakeArchive({{"one.txt", "first"}, {"dir/two.txt", big}});
  LogCapture log;
  std::unique_ptr<oxArchive> archive;
  ASSERT_EQ(oxArchive::OpenMemory(archive, zip, "mem.zip"), OxKernel::kArchiveOk);
  ASSERT_EQ(archive->GetEntries().size(), 2u);
  EXPECT_EQ(archive->GetEntries()[0].name, "one.txt");
  EXPECT_EQ(archive->GetEntries()[1].name, "dir/two.txt");
  EXPECT_EQ(archive->GetEntries()[1].size, 100000u);
  EXPECT_LT(archive->GetEntries()[1].compressedSize, 1000u);
  EXPECT_FALSE(archive->GetEntries()[1].encrypted);
  EXPECT_EQ(archive->Find("two.txt"), nullptr);
  const oxArchive::Entry* two = archive->Find("dir/two.txt");
  ASSERT_NE(two, nullptr);
  OxKernel::oxArray<char> bytes;
  ASSERT_EQ(archive->Read(*two, bytes), OxKernel::kArchiveOk);
  EXPECT_EQ(bytes.size(), 100001u);
  EXPECT_TRUE(Text(bytes) == big);
  ASSERT_EQ(archive->Read(*archive->Find("one.txt"), bytes), OxKernel::kArchiveOk);
  EXPECT_EQ(Text(bytes), "first");
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

TEST(HostArchive, FileAndMemoryListTheSameEntries) {
  const std::string zip = MakeArchive({{"a.dae", "<a/>"}, {"b.png", "png"}});
  const oxtest::TempFile file(zip, ".zae");
  std::unique_ptr<oxArchive> fromFile;
  std::unique_ptr<oxArchive> fromMemory;
  ASSERT_EQ(oxArchive::OpenFile(fromFile, OxKernel::oxString(file.Path()), "f"), 0);
  ASSERT_EQ(oxArchive::OpenMemory(fromMemory, zip, "m"), 0);
  ASSERT_EQ(fromFile->GetEntries().size(), fromMemory->GetEntries().size());
  for (size_t i = 0; i < fromFile->GetEntries().size(); ++i) {
    EXPECT_EQ(fromFile->GetEntries()[i].name, fromMemory->GetEntries()[i].name);
    EXPECT_EQ(fromFile->GetEntries()[i].size, fromMemory->GetEntries()[i].size);
  }
  EXPECT_EQ(fromFile->GetName(), "f");
}

TEST(HostArchive, BytesThatAreNoArchive) {
  LogCapture log;
  std::unique_ptr<oxArchive> archive;
  EXPECT_EQ(oxArchive::OpenMemory(archive, "<COLLADA/>", "x.zae"), OxKernel::kArchiveNotZip);
  EXPECT_EQ(archive, nullptr);
  EXPECT_EQ(log.entries, std::vector{Error("'x.zae' is not a zip archive")});
}

TEST(HostArchive, TruncatedArchiveIsDamaged) {
  const std::string zip = MakeArchive({{"a.dae", std::string(5000, 'x')}});
  LogCapture log;
  std::unique_ptr<oxArchive> archive;
  EXPECT_EQ(oxArchive::OpenMemory(archive, std::string_view(zip).substr(0, zip.size() / 2), "t"),
            OxKernel::kArchiveDamaged);
  EXPECT_EQ(log.entries,
            std::vector{Error("'t' is a damaged or truncated zip archive: its central directory "
                              "is missing")});
}

TEST(HostArchive, MissingFileCannotBeOpened) {
  LogCapture log;
  std::unique_ptr<oxArchive> archive;
  EXPECT_EQ(oxArchive::OpenFile(archive, "/nonexistent/x.zae", "x.zae"), OxKernel::kXMLCannotOpen);
  EXPECT_EQ(log.entries, std::vector{Error("cannot open 'x.zae': No such file or directory")});
}

TEST(HostArchive, EncryptedEntryIsRefused) {
  const std::string zip = MakeArchive({{"a.dae", "secret text", true}});
  LogCapture log;
  std::unique_ptr<oxArchive> archive;
  ASSERT_EQ(oxArchive::OpenMemory(archive, zip, "e.zae"), 0);
  EXPECT_TRUE(archive->GetEntries()[0].encrypted);
  OxKernel::oxArray<char> bytes;
  EXPECT_EQ(archive->Read(archive->GetEntries()[0], bytes), OxKernel::kArchiveEncrypted);
  EXPECT_TRUE(bytes.empty());
  EXPECT_EQ(log.entries,
            std::vector{Error("'e.zae!/a.dae' is encrypted; encrypted entries are not read")});
}

TEST(HostArchive, EntryClaimingTwoBillionBytesIsRefusedBeforeInflating) {
  std::string zip = MakeArchive({{"bomb.dae", std::string(3000, 'z')}});
  oxtest::SetClaimedSize(zip, "bomb.dae", 2'000'000'000u);
  LogCapture log;
  std::unique_ptr<oxArchive> archive;
  ASSERT_EQ(oxArchive::OpenMemory(archive, zip, "b.zae"), 0);
  const oxArchive::Entry& entry = archive->GetEntries()[0];
  EXPECT_EQ(entry.size, 2'000'000'000u);
  OxKernel::oxArray<char> bytes;
  EXPECT_EQ(archive->Read(entry, bytes), OxKernel::kArchiveTooCompressed);
  EXPECT_EQ(bytes.capacity(), 0u);
  EXPECT_EQ(log.entries,
            std::vector{Error(OxKernel::oxConcat(
                "'b.zae!/bomb.dae' would inflate ", entry.compressedSize,
                " bytes to 2000000000, more than 1000 times as many; it is not read"))});
}

TEST(HostArchive, EntryShorterThanItsClaimIsDamaged) {
  std::string zip = MakeArchive({{"a.dae", std::string(3000, 'z')}});
  oxtest::SetClaimedSize(zip, "a.dae", 5000);
  LogCapture log;
  std::unique_ptr<oxArchive> archive;
  ASSERT_EQ(oxArchive::OpenMemory(archive, zip, "s.zae"), 0);
  OxKernel::oxArray<char> bytes;
  EXPECT_EQ(archive->Read(archive->GetEntries()[0], bytes), OxKernel::kArchiveDamaged);
  EXPECT_TRUE(bytes.empty());
  EXPECT_EQ(
      log.entries,
      std::vector{Error(
          "cannot inflate 's.zae!/a.dae': it holds 3000 bytes, not the 5000 its archive lists")});
}

TEST(HostArchive, EntryLongerThanItsClaimIsDamaged) {
  std::string zip = MakeArchive({{"a.dae", std::string(3000, 'z')}});
  oxtest::SetClaimedSize(zip, "a.dae", 2000);
  LogCapture log;
  std::unique_ptr<oxArchive> archive;
  ASSERT_EQ(oxArchive::OpenMemory(archive, zip, "l.zae"), 0);
  OxKernel::oxArray<char> bytes;
  EXPECT_EQ(archive->Read(archive->GetEntries()[0], bytes), OxKernel::kArchiveDamaged);
  EXPECT_EQ(log.entries, std::vector{Error("cannot inflate 'l.zae!/a.dae': it holds more than "
                                           "the 2000 bytes its archive lists")});
}

TEST(HostArchive, ChecksumMismatchIsDamaged) {
  std::string zip = MakeArchive({{"a.dae", std::string(3000, 'z')}});
  // The checksum sits at byte 14 of the local header and 16 of the central
  // directory's header: change both, so that only the data disagrees.
  const size_t central = zip.find(std::string_view("PK\1\2", 4));
  zip[central + 16] = static_cast<char>(zip[central + 16] ^ 1);
  zip[14] = static_cast<char>(zip[14] ^ 1);
  LogCapture log;
  std::unique_ptr<oxArchive> archive;
  ASSERT_EQ(oxArchive::OpenMemory(archive, zip, "c.zae"), 0);
  OxKernel::oxArray<char> bytes;
  EXPECT_EQ(archive->Read(archive->GetEntries()[0], bytes), OxKernel::kArchiveDamaged);
  EXPECT_TRUE(bytes.empty());
  EXPECT_EQ(log.entries, std::vector{Error("cannot inflate 'c.zae!/a.dae': CRC error")});
}
