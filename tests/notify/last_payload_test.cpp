// The payload globals: what a post leaves behind, and what Register drops.
#include <gtest/gtest.h>

#include "NorvaneMXRK7Setup.h"
#include "notify/last_payload.h"

namespace nvx::notify {
namespace {

TEST(LastPayloadTest, GlobalsReferToTheLastStoredPayloadOfTheirFamily) {
  dropLastPayload(Family::InputAudio);
  dropLastPayload(Family::BoostLevel);
  EXPECT_EQ(inputAudioInfo, nullptr);
  EXPECT_FALSE(lastPayload(Family::InputAudio).has_value());

  storeLastPayload(Family::InputAudio, {0, 1, 3});
  ASSERT_NE(inputAudioInfo, nullptr);
  EXPECT_EQ(boostLevelInfo, nullptr) << "the other family is untouched";
  const void *reference = inputAudioInfo;
  storeLastPayload(Family::InputAudio, {0, 2, 6});
  EXPECT_EQ(inputAudioInfo, reference) << "a reference a client kept stays valid";
  const auto input = lastPayload(Family::InputAudio);
  ASSERT_TRUE(input.has_value());
  EXPECT_EQ(input->channel, 2);
  EXPECT_EQ(input->index, 6);

  storeLastPayload(Family::BoostLevel, {0, 0, 2});
  ASSERT_NE(boostLevelInfo, nullptr);
  EXPECT_NE(boostLevelInfo, inputAudioInfo);
  EXPECT_EQ(lastPayload(Family::BoostLevel)->index, 2);
  EXPECT_EQ(lastPayload(Family::InputAudio)->index, 6);

  dropLastPayload(Family::InputAudio);
  EXPECT_EQ(inputAudioInfo, nullptr);
  EXPECT_FALSE(lastPayload(Family::InputAudio).has_value());
  EXPECT_NE(boostLevelInfo, nullptr);
  EXPECT_EQ(midiChannelInfo, nullptr);
  EXPECT_EQ(midiKeyModeInfo, nullptr);
}

}  // namespace
}  // namespace nvx::notify
