// One channel to a Bpd scanner's scan part. Every block that the device sends goes to the scanner;
// those who wait for a reply are told when it has got there. Any number may wait at once.
#pragma once

#include <cstdint>

#include "shared/sessions/stream_session.h"
#include "shared/streams/block_stream.h"

namespace qvn::shared {

// A request is a whole block, its key the id of the document in it.
class StoreSession : public StreamSession<BlockStream> {
 public:
  using StreamSession::StreamSession;
  ~StoreSession() override { finish(); }

 protected:
  bool isReply(const Block& block, Bytes id) const override;
  void deliver(const Block& block, const DeviceReference& device) override {
    lend(device, block.bytes, block.code);
  }
  void deliverEnd() override;
  std::uint32_t streamError() const override;
  // A reply says which request it answers.
  bool mixesUpReplies() const override { return false; }
};

}  // namespace qvn::shared
