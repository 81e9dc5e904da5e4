#include "scansqlite/carving/overflow_payload_wal.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Bytes;

constexpr uint32_t kPageSize = 64;
constexpr uint32_t kFrameSize = kPageSize + 24;
constexpr uint32_t kSalt = 0x5A000000;

// A frame of a page whose payload counts up from `first`.
Bytes Frame(uint32_t page, uint32_t salt, uint32_t next, uint8_t first) {
  return hand_made::Join({hand_made::U32(page), Bytes(4, 0), hand_made::U32(salt), Bytes(12, 0),
                          hand_made::U32(next), hand_made::Pattern(60, first)});
}

// The frame of the record: header at offset 30, 4 bytes long, 20 bytes of body, then the first
// overflow page's number.
Bytes RecordFrame(uint32_t first_page, uint32_t salt = kSalt) {
  Bytes frame = Frame(1, salt, 0, 200);
  hand_made::Put(frame, 54, hand_made::U32(first_page));
  return frame;
}

struct Outcome {
  std::optional<Bytes> body;
  uint32_t data_bytes = 0;
};

class WalChain : public testing::Test {
 protected:
  void SetUp() override {
    header_ = hand_made::Header(kPageSize, 8);
    main_ = Bytes(kPageSize * 8, 0);
    for (uint32_t page = 0; page < 8; ++page) {
      hand_made::Put(main_, page * kPageSize + 4, hand_made::Pattern(60, 100));
    }
    record_.serial_bytes = 3;
    record_.header_size = 4;
    record_.local_size = 24;
  }

  void SetNextInMain(uint32_t page, uint32_t next) {
    hand_made::Put(main_, (page - 1) * kPageSize, hand_made::U32(next));
  }

  Outcome Read(const Bytes& frames, uint32_t data_bytes, uint32_t salt = kSalt,
               uint32_t kept_out = 0, uint32_t header_start = 30) {
    WalPageMap map;
    MapWalFrames(MemoryBytes{frames.data(), frames.size()}, kFrameSize, map);
    hand_made::FileOf file(main_);
    CarvedRecord record = record_;
    record.data_bytes = data_bytes;
    record.payload_size = record.header_size + data_bytes;
    const WalSource<MemoryBytes> source{
        &header_, {frames.data(), frames.size()}, &map, &file.buf(), kept_out};
    Outcome outcome;
    Bytes body;
    if (ReadOverflowPayloadWal(source, salt, header_start, record, body)) outcome.body = body;
    outcome.data_bytes = record.data_bytes;
    EXPECT_EQ(record.payload_size, record.header_size + data_bytes);
    return outcome;
  }

  // The local part, then the bytes of the chain.
  static Bytes Local(const Bytes& frames, const Bytes& chain) {
    return hand_made::Join({Bytes(frames.begin() + 34, frames.begin() + 54), chain});
  }

  DbHeaderInfo header_;
  Bytes main_;
  CarvedRecord record_;
};

TEST_F(WalChain, GoesThroughTheFramesWithTheSalt) {
  const Bytes frames =
      hand_made::Join({RecordFrame(3), Frame(3, kSalt, 5, 1), Frame(5, kSalt, 0, 61)});
  const Outcome outcome = Read(frames, 100);
  EXPECT_EQ(outcome.body, Local(frames, hand_made::Pattern(80, 1)));
  EXPECT_EQ(outcome.data_bytes, 100U);
}

struct SaltCase {
  const char* name;
  std::vector<std::pair<uint32_t, uint8_t>> frames;  // salt and first payload byte of page 3
  uint8_t expected;
};

TEST_F(WalChain, TakesTheNewestFrameWithAllBitsOfTheSalt) {
  const SaltCase cases[] = {
      {"newest of two", {{kSalt, 1}, {kSalt, 30}}, 30},
      {"a newer one of another salt", {{kSalt, 1}, {0x5B000000, 30}}, 1},
      {"low bytes that are not 0 never match", {{0x5A000001, 1}}, 100},
      {"no frame of the page", {}, 100},
  };
  for (const SaltCase& c : cases) {
    SCOPED_TRACE(c.name);
    Bytes frames = RecordFrame(3);
    for (const auto& [salt, first] : c.frames) {
      frames = hand_made::Join({frames, Frame(3, salt, 0, first)});
    }
    EXPECT_EQ(Read(frames, 50).body, Local(frames, hand_made::Pattern(30, c.expected)));
  }
}

TEST_F(WalChain, LeavesTheLogForTheMainFileAndComesBack) {
  SetNextInMain(4, 3);
  const Bytes frames =
      hand_made::Join({RecordFrame(2), Frame(2, kSalt, 4, 1), Frame(3, kSalt, 0, 7)});
  const Bytes chain = hand_made::Join(
      {hand_made::Pattern(60, 1), hand_made::Pattern(60, 100), hand_made::Pattern(10, 7)});
  EXPECT_EQ(Read(frames, 150).body, Local(frames, chain));
}

TEST_F(WalChain, AChainThatEndsEarlyShortensTheRecord) {
  const Bytes frames = hand_made::Join({RecordFrame(3), Frame(3, kSalt, 0, 1)});
  const Outcome outcome = Read(frames, 500);
  EXPECT_EQ(outcome.data_bytes, 80U);
  EXPECT_EQ(outcome.body, Local(frames, hand_made::Pattern(60, 1)));
}

TEST_F(WalChain, AFirstPageOfZeroKeepsTheLocalPart) {
  const Bytes frames = RecordFrame(0);
  const Outcome outcome = Read(frames, 500);
  EXPECT_EQ(outcome.data_bytes, 20U);
  EXPECT_EQ(outcome.body, Local(frames, {}));
}

TEST_F(WalChain, PagesOutsideTheDatabaseAreAMiss) {
  for (const uint32_t page : {8U, 9U, 0xFFFFFFFFU}) {
    EXPECT_EQ(Read(hand_made::Join({RecordFrame(page), Frame(page, kSalt, 0, 1)}), 50).body,
              std::nullopt)
        << page;
  }
}

TEST_F(WalChain, BytesKeptOutAtThePagesEndCarryNoPayload) {
  SetNextInMain(4, 0);
  const Bytes frames = hand_made::Join({RecordFrame(3), Frame(3, kSalt, 4, 1)});
  const Bytes chain = hand_made::Join({hand_made::Pattern(44, 1), hand_made::Pattern(16, 100)});
  EXPECT_EQ(Read(frames, 80, kSalt, 16).body, Local(frames, chain));
}

TEST_F(WalChain, FewerBytesThanAreKeptOutWrapAndTheCopyIsClamped) {
  record_.serial_bytes = 74;  // 50 bytes of header beyond the page, 10 left before the wrap
  record_.header_size = 75;
  const Bytes frames = hand_made::Join({RecordFrame(3), Frame(3, kSalt, 0, 1)});
  // 60 - 16 - 50 wraps, so that what is missing decides: 40 + 50 are counted, 40 are copied.
  const Outcome outcome = Read(frames, 40, kSalt, 16);
  EXPECT_EQ(outcome.body, hand_made::Pattern(40, 1));
  EXPECT_EQ(outcome.data_bytes, 40U);
}

TEST_F(WalChain, AFrameCutOffByTheEndOfTheLogGivesZeros) {
  Bytes frames = hand_made::Join({RecordFrame(3), Frame(3, kSalt, 0, 1)});
  frames.resize(frames.size() - 50);  // 10 bytes of payload are left
  const Bytes chain = hand_made::Join({hand_made::Pattern(10, 1), Bytes(20, 0)});
  EXPECT_EQ(Read(frames, 50).body, Local(frames, chain));
}

TEST_F(WalChain, RefusesALocalPartThatCannotBe) {
  const Bytes frames = RecordFrame(3);
  EXPECT_EQ(Read(frames, 19).body, std::nullopt) << "exceeds the body";
  EXPECT_EQ(Read(frames, 50, kSalt, 0, 70).body, std::nullopt) << "leaves the log";
  EXPECT_EQ(Read(hand_made::Join({frames, Bytes(600, 0)}), 50, kSalt, 0, 8 * 64 - 27).body,
            std::nullopt)
      << "lies further into the log than the database is long";
}

TEST_F(WalChain, AFirstPageNumberBehindTheLogReadsAsZero) {
  Bytes frames = RecordFrame(3);
  frames.resize(54);
  EXPECT_EQ(Read(frames, 500).data_bytes, 20U);
}

TEST_F(WalChain, ALoopIsReadUntilItGaveEnough) {
  const Bytes frames = hand_made::Join({RecordFrame(3), Frame(3, kSalt, 3, 1)});
  const Bytes chain = hand_made::Join({hand_made::Pattern(60, 1), hand_made::Pattern(60, 1)});
  EXPECT_EQ(Read(frames, 140).body, Local(frames, chain));
}

TEST_F(WalChain, ALoopThatGivesNothingIsAMiss) {
  header_ = hand_made::Header(20, 20);  // pages of 20 bytes leave none beside the 16 kept out
  Bytes main(400, 0);
  hand_made::Put(main, 40, hand_made::U32(3));
  main_ = main;
  EXPECT_EQ(Read(RecordFrame(3), 50, 0, 16).body, std::nullopt);
}

TEST_F(WalChain, AChainWithoutRoomThatEndsIsShortened) {
  header_ = hand_made::Header(20, 20);
  main_ = Bytes(400, 0);
  EXPECT_EQ(Read(RecordFrame(3), 50, 0, 16).data_bytes, 20U);
}

TEST_F(WalChain, AReadBehindTheMainFileThrows) {
  main_.resize(kPageSize * 2 + 30);
  EXPECT_THROW(Read(RecordFrame(3), 70, 0), std::out_of_range);
}

TEST_F(WalChain, APageFullOfHeaderIsSkippedWhole) {
  record_.serial_bytes = 88;
  record_.header_size = 90;
  const Bytes frames =
      hand_made::Join({RecordFrame(3), Frame(3, kSalt, 5, 1), Frame(5, kSalt, 0, 61)});
  EXPECT_EQ(Read(frames, 40).body, hand_made::Pattern(40, 61));
}

}  // namespace
