#include "scanner/bpd/job/bpd_scan_task.h"

#include "bidi/element/element_text.h"
#include "bidi/object_store/received_message.h"
#include "bidi/object_store/store_messages.h"
#include "scanner/bpd/bpd_scanner.h"
#include "scanner/bpd/scan_block.h"
#include "scanner/bpd/scanner_object_store.h"

namespace qvn {

std::uint32_t BpdScanTask::leaveHostMode() {
  return scanner_.objectStore().exchange(callMethod(scan_object::kSystem, "exitHostUSBSendMode", nullptr));
}

void BpdScanTask::doUpdate(Data& data) {
  const ScanBlock block = readScanBlock(data);
  if (block.kind != ScanBlock::Kind::Document) return;
  const auto notification = readNotification(block.text);
  if (notification && notification->observer == scan_object::kSystemObserver)
    takeSystemUpdate(textOrEmpty(notification->data.get()));
}

}  // namespace qvn
