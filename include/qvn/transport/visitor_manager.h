// VisitorManager: gives the operations of a transport by name.
#pragma once

#include <string>

#include "qvn/transport/visitor.h"

namespace qvn {

// The names of the visitors, those that the library asks for first. The visitor that applies a changed
// attribute of a device is named by the attribute's descriptor (attribute_codec.h).
namespace visitor_name {
// A Cpd printer has accepted a job, whose data comes next: run on the open "print" connection. No data. The
// result is ignored.
inline constexpr char kStartJobPrinter[] = "startJobPrinter";
// A Cpd printer's job was cancelled, or refused by the printer: what the transport has taken of its data and
// not sent yet is dropped. On the "print" connection. No data. The result is only logged.
inline constexpr char kFlushPrintBuffer[] = "flushPrintBufferVisitor";
// Fetches the status cache of a Cpd printer by a channel of its own: delivers it to the device's observers,
// as the reply to the packet "get cache" with its header, before it returns. On the "cache" connection, which
// is not opened for it. No data. Result 0, with nothing delivered counting as 1460; 1 when there is no such
// channel, and the library asks by a packet then; else why not.
inline constexpr char kCache[] = "cacheVisitor";
// The longest packet that a Bpd printer takes, when it has told so on opening: the data is an attribute text
// with MaxWritePacketSize, in bytes. On the "bidi" connection. The result is only logged.
inline constexpr char kSetMaxPacketSize[] = "setMaxPacketSizeVisitor";
// Sends the NPA packet that is the data and returns when its reply has been delivered to the device's
// observers. Result 0 when the exchange was carried out; the data's code is 0 then, or why there was no reply
// (1460). Another result counts as the failure of the exchange: 1 on a channel that takes no packets. On the
// "bidi" connection, for the packets of a Cpd printer's job on "print".
inline constexpr char kNpaData[] = "npaDataVisitor";

// The Bpd printers' operations. Where the data is "a number" it is 4 bytes in the machine's byte order.
// Asks whether the printer takes NPA packets: the visitor puts a number into the data, 0 for no.
inline constexpr char kGetNpaMode[] = "getNpaModeVisitor";
// The job that begins has alerts to deliver (1) or not (0), as a number; result 0 when the channel can do so.
inline constexpr char kSetNpaWrapMode[] = "setNpaWrapModeVisitor";
// The job that begins is plain data. The data is the number 0.
inline constexpr char kSetNonNpaPrinter[] = "setNonNpaPrinterVisitor";
// Sends the packet that is the data, to which there is no reply; result 0 when it was sent.
inline constexpr char kStartNpaMode[] = "startNpaModeVisitor";
// What the spooler said of the job, as an attribute text: HostName, JobName, UserName, QueueName,
// QueueNumber, SpoolerJobId, NpaSupported, TrueEndOfJob. The result is only logged.
inline constexpr char kJobHeader[] = "jobHeaderVisitor";
// Sends the packet that is the data, which names the job.
inline constexpr char kNamePrintJob[] = "namePrintJobVisitor";

// The scanners' and HIDs' operations.
// Sends the ESC command that is the data and returns when its reply (esc_command_table.h) has been delivered
// to the device, at once when there is none to wait for. The data's code is 0, or why there was no reply.
inline constexpr char kEscCommand[] = "escCommandVisitor";
// Sees to it that an open HID still sends its reports, before one more client counts on it. No data; result 0
// or 1 to go on.
inline constexpr char kOpenHid[] = "openHidVisitor";
// Sends the XML document that is the data to a Bpd scanner and returns when the response or exception with
// its requestID has been delivered to the device. The data's code is 0, or why there was no reply. Can be
// cancelled (Visitor::cancel).
inline constexpr char kObjectStoreData[] = "objectStoreDataVisitor";

// The rest of the vocabulary, which the library never asks for.
inline constexpr char kUsb1AdapterParms[] = "usb1AdapterParmsVisitor";
inline constexpr char kUsb1ProtocolParms[] = "usb1ProtocolParmsVisitor";
inline constexpr char kRegisterScanHost[] = "registerScanHostVisitor";
inline constexpr char kStartScan[] = "startScanVisitor";
inline constexpr char kTeoj[] = "teojVisitor";
inline constexpr char kTeojInfo[] = "teojInfoVisitor";
inline constexpr char kBlockingWrite[] = "blockingWriteVisitor";
inline constexpr char kNonBlockingWrite[] = "nonBlockingWriteVisitor";
inline constexpr char kDiscovery[] = "discoveryVisitor";
inline constexpr char kXmlData[] = "xmlDataVisitor";
inline constexpr char kEscData[] = "escDataVisitor";
}  // namespace visitor_name

// Lives as long as its module is loaded; any thread may call it.
//
// The order of the virtual operations is part of the interface between the library and its plug-ins.
class VisitorManager {
 public:
  virtual ~VisitorManager() = default;

  // A visitor for the operation. Never null: for a name it does not know a transport gives one whose result
  // is 1. The transport owns it; it is valid until it is released.
  virtual Visitor* getVisitor(const std::string& name) = 0;
  virtual void releaseVisitor(Visitor* visitor) = 0;
};

}  // namespace qvn
