#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "differential/both_scans.h"

namespace differential {
namespace {

namespace fs = std::filesystem;

constexpr uint64_t kGiB = uint64_t{1} << 30;
constexpr uint64_t kPage = 65536;

// A small table that refuses NULL in its first column, so that the plain walk is soon done with
// zeros.
Application Notes() {
  AppTable table;
  table.name = "notes";
  table.columns = {{"n", "INTEGER", Kind::kDate}, {"body", "TEXT", Kind::kText}};
  table.fields = {{"n", "INTEGER", 0, 0, 0}, {"body", "TEXT", 2, 0, 0}};
  table.features = {{"n", 1, 0, 1300000000000, 1800000000000, "", "", -1}};
  return {{table}, 1, {}};
}

// Writes records on the two pages on both sides of `place`, a few of them across it.
void WriteAround(Dice& dice, std::fstream& file, uint64_t place) {
  std::string pages(4 * kPage, '\0');
  PlantRecords(dice, Notes(), pages, 60, 0);
  for (size_t page = 0; page < 4; ++page) pages[page * kPage] = '\x0D';
  std::string across(kPage, '\0');
  PlantRecords(dice, Notes(), across, 40, 0);
  pages.replace(2 * kPage - 600, 590, across, 100, 590);
  file.seekp(static_cast<std::streamoff>(place - 2 * kPage));
  file.write(pages.data(), static_cast<std::streamsize>(pages.size()));
}

// A sparse file in which offsets no longer fit 31 and 32 bits. Records stand around these places.
// `stated` is the number of pages that the header gives, 0 for the true one.
void ScanHugeFile(uint64_t size, uint32_t stated, const std::string& name) {
  if (!RunsLong()) GTEST_SKIP() << "takes minutes: set VEXA_LONG_TESTS";
  BothScans scans;
  scans.Configure(Notes());
  Dice dice(size / kGiB);
  SourceShape shape;
  shape.page_size = kPage / 2;
  Source source = MakeSource(dice, Notes(), shape);
  PutBigEndian(source.db, 28, stated != 0 ? stated : size / (kPage / 2), 4);
  scans.SetSource(source);
  const std::string path = scans.context().source_db_path;
  fs::resize_file(path, size);
  {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    for (const uint64_t place : {2 * kGiB, 4 * kGiB}) {
      if (place < size) WriteAround(dice, file, place);
    }
    WriteAround(dice, file, size - 2 * kPage);
  }
  scans.ExpectEqual(Range::kDeleted, name);
  EXPECT_GT(scans.rows_seen(), 60U);
}

TEST(HugeFile, PastTwoGibibytes) { ScanHugeFile(2 * kGiB + 9 * kPage, 0, "2 GiB"); }

TEST(HugeFile, PastFourGibibytes) { ScanHugeFile(4 * kGiB + 9 * kPage, 0, "4 GiB"); }

TEST(HugeFile, OneOfFourGibibytesThatStatesFewPages) {
  ScanHugeFile(4 * kGiB + 9 * kPage + 1000, 900, "few pages stated");
}

}  // namespace
}  // namespace differential
