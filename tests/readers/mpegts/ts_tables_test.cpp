// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "testkit/encoders/ts_builder.h"
#include "testkit/reader_support.h"

namespace korr::txsub {
namespace {

using encoders::Bytes;
using encoders::TableVersion;
using encoders::TsBuilder;
using encoders::TsProgram;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

TsProgram program(std::uint16_t number, std::uint16_t pid) {
  return {.number = number,
          .pmtPid = static_cast<std::uint16_t>(0x1000 + number),
          .streams = {{.pid = pid}}};
}

class TablesTest : public testing::Test {
 protected:
  /// Whether anything changed.
  bool take(const Bytes& packets) {
    bool hasChanged = false;
    for (std::size_t at = 0; at < packets.size(); at += TsBuilder::kPacketBytes) {
      const TsPacket packet(packets.data() + at);
      if (tables_.wants(packet.pid())) hasChanged |= tables_.take(packet);
    }
    return hasChanged;
  }

  /// PID of the first stream, program by program.
  std::vector<int> pids() const {
    std::vector<int> pids;
    for (const auto& [number, map] : tables_.programs()) pids.push_back(map.streams.at(0).pid);
    return pids;
  }

  TsBuilder stream_;
  test_support::RecordingLogger logger_;
  TsReport report_{&logger_};
  TsTables tables_{report_};
};

TEST_F(TablesTest, SectionsWithAWrongCrcCountForNothing) {
  ASSERT_TRUE(take(stream_.tables(program(1, 0x30)).take()));
  Bytes pmt = stream_.pmt(program(1, 0x31), 1).take();
  pmt[4 + 1 + 14] ^= 0x01;  // header, pointer_field, the stream's PID
  EXPECT_FALSE(take(pmt));
  EXPECT_FALSE(take(pmt));
  EXPECT_THAT(pids(), ElementsAre(0x30));
  EXPECT_THAT(logger_.lines, ElementsAre("PID 0x1001: a damaged PMT; passed over"));
}

TEST_F(TablesTest, TablesThatAreNotValidYetAreLeftForLater) {
  TableVersion next(1);
  next.isCurrent = false;
  take(stream_.tables(program(1, 0x30)).take());
  EXPECT_FALSE(take(stream_.pmt(program(1, 0x31), next).take()));
  EXPECT_FALSE(take(stream_.pat(std::array{program(2, 0x31)}, next).take()));
  EXPECT_THAT(pids(), ElementsAre(0x30));
  EXPECT_TRUE(take(stream_.pmt(program(1, 0x31), 1).take()));
  EXPECT_THAT(pids(), ElementsAre(0x31));
  EXPECT_THAT(logger_.lines, IsEmpty());
}

TEST_F(TablesTest, ProgramsThatLeaveThePatAreForgotten) {
  const std::array both{program(1, 0x30), program(2, 0x31)};
  take(stream_.pat(both).pmt(both[0]).pmt(both[1]).take());
  EXPECT_THAT(pids(), ElementsAre(0x30, 0x31));
  EXPECT_TRUE(take(stream_.pat(std::array{both[1]}, 1).take()));
  EXPECT_THAT(pids(), ElementsAre(0x31));
  EXPECT_TRUE(tables_.areComplete());
  EXPECT_FALSE(tables_.wants(both[0].pmtPid));
}

TEST_F(TablesTest, APatThatNeedsFewerSectionsLosesTheLast) {
  TableVersion first(0);
  first.lastSection = 1;
  TableVersion second = first;
  second.section = 1;
  const TsProgram one = program(1, 0x30);
  take(stream_.pat(std::array{one}, first).pat(std::array{program(2, 0x31)}, second).take());
  take(stream_.pmt(one).take());
  EXPECT_FALSE(tables_.areComplete());
  EXPECT_TRUE(take(stream_.pat(std::array{one}, 1).take()));
  EXPECT_TRUE(tables_.areComplete());
}

TEST_F(TablesTest, AMapOnTheWrongPidIsNobodys) {
  take(stream_.pat(std::array{program(1, 0x30), program(2, 0x31)}).take());
  TsProgram impostor = program(1, 0x40);
  impostor.pmtPid = program(2, 0).pmtPid;
  EXPECT_FALSE(take(stream_.pmt(impostor).take()));
  EXPECT_THAT(tables_.programs(), IsEmpty());
}

TEST_F(TablesTest, ALostPacketCostsTheSectionInIt) {
  TsProgram large = program(1, 0x30);
  large.streams.resize(100, large.streams[0]);
  take(stream_.pat(std::array{large}).take());
  Bytes torn = stream_.pmt(large).take();
  ASSERT_GT(torn.size(), 2 * TsBuilder::kPacketBytes);
  torn.erase(torn.begin() + TsBuilder::kPacketBytes, torn.begin() + 2 * TsBuilder::kPacketBytes);
  EXPECT_FALSE(take(torn));
  EXPECT_THAT(logger_.lines, IsEmpty()) << "what is torn is not damaged";
  EXPECT_TRUE(take(stream_.pmt(large).take()));
  EXPECT_THAT(tables_.programs().at(1).streams, SizeIs(100));
}

TEST_F(TablesTest, DamageMakesNoMoreProgramsThanAMultiplexHas) {
  constexpr unsigned kSections = 5;
  for (unsigned section = 0; section < kSections; ++section) {
    std::vector<TsProgram> programs;
    for (unsigned i = 1; i <= 250; ++i) {
      programs.push_back({.number = static_cast<std::uint16_t>(section * 250 + i),
                          .pmtPid = static_cast<std::uint16_t>(0x100 + section * 250 + i)});
    }
    TableVersion version(0);
    version.section = section;
    version.lastSection = kSections - 1;
    take(stream_.pat(programs, version).take());
  }
  EXPECT_THAT(tables_.pids(), SizeIs(1024 + 2));
  for (std::uint16_t service = 1; service <= 1025; ++service) stream_.sdt(service, "name");
  take(stream_.take());
  EXPECT_EQ(tables_.serviceName(1024), "name");
  EXPECT_EQ(tables_.serviceName(1025), "");
}

}  // namespace
}  // namespace korr::txsub
