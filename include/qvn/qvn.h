/*
 * QR__serv: printing, scanning and HID input through transport plug-ins. These are all of its functions.
 *
 * A program initialises the library, takes a client identifier, finds or names a device, opens it by its
 * handle, works with it, closes it and uninitialises the library. This one prints on the Cpd printer whose
 * port name it is given:
 *
 *     #include <poll.h>
 *     #include <qvn/qvn.h>
 *
 *     int main(int argc, char** argv) {
 *       static const uint8_t data[] = "Hello\r\n\f\x1B\x2A\x82\0\0\0\0\xAC";
 *       const uint32_t size = sizeof data - 1;
 *       uint32_t client, handle, rc, ended, at = 0, taken, pauses = 0;
 *       if (argc != 2 || QvnInitialize() != 0) return 2;
 *       QvnGetClientId(&client);
 *       rc = QvnEnumSpecificPrinter(client, argv[1], &handle);
 *       if (rc == 0) rc = QvnOpenPrinter(client, handle);
 *       if (rc == 0) {
 *         rc = QvnStartJobPrinter(client, handle, 0, argv[1], "host", "title", "user");
 *         if (rc == 0) {
 *           while (rc == 0 && at < size) {
 *             rc = QvnWritePrinter(client, handle, data + at, size - at, &taken);
 *             at += taken;
 *             if (rc == QRN_ERROR_INSUFFICIENT_BUFFER && pauses++ < 600) {
 *               poll(0, 0, 100);
 *               rc = 0;
 *             }
 *           }
 *           if (rc != 0) QvnCancelJobPrinter(client, handle);
 *           ended = QvnEndJobPrinter(client, handle);
 *           if (rc == 0) rc = ended;
 *         }
 *         QvnClosePrinter(client, handle);
 *       }
 *       QvnUninitialize();
 *       return rc == 0 ? 0 : 1;
 *     }
 *
 * The last eight bytes of the data are the end-of-job marker, without which a Cpd printer drops the job; a
 * Bpd printer's jobs have none. README.md has the same for files and for printers of both families.
 *
 * The rules of this comment hold for every function below; a function's own comment adds to them. What goes
 * across several functions is in docs/client-guide.md, in tables: what to do about each result of a print
 * job, how lost devices are noticed, a scanner's parameters, alerts and pixels, and what callbacks may do.
 *
 * Results. Every function returns an unsigned 32-bit result code: 0 for success, else a published system
 * error number (result_codes.h names those that the library itself produces). Besides the codes that a
 * function's comment lists it returns, unchanged, whatever code the device's transport, the registry or the
 * operating system gives. No exception leaves a function.
 *
 * Initialisation. Outside a QvnInitialize/QvnUninitialize pair every function returns 1 and does nothing,
 * except QvnInitialize, QvnUninitialize, QvnGetClientId, QvnInstall, QvnUninstall and QvnGetLongHid, which
 * need none.
 *
 * Client identifier. The first argument of nearly every function is the caller's identifier from
 * QvnGetClientId. It tags registrations, the ownership of jobs and log lines; the library keeps no table of
 * clients and accepts any number where a comment does not refuse 0. One process may use several.
 *
 * Handles. A device is named by an unsigned 32-bit handle, unique among the devices of its kind (printers,
 * scanners, HIDs) and the same in every process and after a restart. A handle of 0 returns 6 before
 * anything else is done, except where a comment says otherwise. A handle that no stored device carries
 * returns 6 too, but for the functions that need no device: those that read attributes return 1168, those
 * that delete one 0 or the registry's code, and QvnCancelJobPrinter, QvnRegisterForAsyncDataScanner,
 * QvnUnregisterForAsyncDataScanner, QvnUnregisterForReportsHid, QvnRegisterForNotificationsHid and
 * QvnUnregisterForNotificationsHid return 0. Opening, setting attributes, and reading the current state or
 * the printer cache work on any stored device; the other operations on a device need it to be open in this
 * process and return 6 when it is not.
 *
 * Arguments. A required pointer that is null, or a required size that is 0, returns 87 and nothing is done.
 * Texts are NUL-terminated 8-bit strings, passed through as bytes; they and all buffers belong to the
 * caller and are not used after the call, functions passed as callbacks excepted. Sizes and lengths count
 * bytes. Out-values and the numbers in arguments are in the byte order of the machine; what a device sends
 * or receives (NPA packets, ESC commands, print data) is passed as it stands on the wire.
 *
 * Output buffers. A function that fills a buffer takes the buffer, its size and a pointer `required`. It
 * first sets `*required` to 0 (and the first byte of a text buffer to 0). When the result fits it is copied
 * and `*required` is the number of bytes written, a text's terminator included (one byte, or two for wide
 * texts). When it does not fit nothing is copied, `*required` is the size that would do, and the result is
 * 122.
 *
 * Attributes. A device is described by typed attributes. The `key` that names one is its whole descriptor;
 * attributes.h defines them all, for example QVN_ATTRIBUTE_PORTNAME. Reads are answered from the registry and
 * need the device neither open nor present: 1168 when there is no such device or it does not carry the
 * attribute, 1629 when the descriptor is of another type than the function. Writes go to the device.
 *
 * Threads. Any thread may call any function at any time; calls on one device wait for each other. The last
 * QvnUninitialize lets no new call in and waits for those that are running. A device-found or queue-found
 * callback runs on the calling thread, before the function returns. Every other callback runs on a thread of
 * the library or of a transport, or of the client whose call it reports on; it should return soon. Data
 * passed to a callback is valid only until the callback returns.
 *
 * Lost devices. A lost connection is told of only during a scan; the next operation that talks to the device
 * connects anew. Alerts are heard again from then on, a HID's reports once QvnOpenHid has been called again.
 *
 * Standard output. The library writes nothing to it, but for the line "UNKNOWN TYPE" when a Bpd scanner sends
 * a document with a tag that it does not know. A program whose standard output is data keeps the real one on
 * a descriptor of its own.
 *
 * Processes. Each process initialises the library for itself; what one has open or registered is not
 * another's. A child made by fork while the library is initialised, or while another thread is in a function
 * of it, has none of the library's threads, and what they had locked stays locked: there every function
 * but QvnGetClientId returns 1 and does nothing, QvnInitialize too; it may exec, and end in any way. A child
 * made before or after that initialises the library for itself. A process that ends in the middle of a call
 * leaves what processes share (the registry, the log, the stored devices) usable.
 *
 * Callbacks. Inside a callback every function may be called, on any device, and returns soon: nothing waits
 * there for another callback, for the end of a thread or of a device, or for an operation that another thread
 * has begun on the device. What therefore cannot be done returns 170 and changes nothing: an operation on a
 * device that another thread works with at that moment, or that the callback reports on (a notification); the
 * end of a job that something must be waited for; the last QvnUninitialize. What needs no such wait is done
 * as always: from inside its notification a printer can be opened once more and asked for what it is or has,
 * other devices can be used. Three things are done at once or soon: unregistering takes effect, though a call
 * that runs on another thread may still be running; a close returns 0 and is done when no callback is in its
 * way; a removed transport is unloaded when nothing uses it any more.
 *
 * Outside callbacks, when an unregistering function or a device's last close has returned, no call of the
 * registration begins or is running; hold no lock then that the callback takes. After the last
 * QvnUninitialize no callback runs. What a callback throws is contained and logged, the next client is called
 * all the same; a HID registration that throws is removed.
 */
#ifndef QVN_QVN_H
#define QVN_QVN_H

#include <stdint.h>

#include "qvn/result_codes.h"

#if defined(__GNUC__)
#define QVN_EXPORT __attribute__((visibility("default")))
#else
#define QVN_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Callbacks ---------------------------------------------------------------------------------- */

/* A stored device matched an enumeration. */
typedef void (*QvnDeviceFoundCallback)(uint32_t clientId, uint32_t deviceHandle);

/*
 * A local print queue belongs to a device of the default model. Both texts live until the callback returns.
 */
typedef void (*QvnQueueFoundCallback)(uint32_t clientId, const char* printerName, const char* portName);

/*
 * A printer sent an alert that the client's mask covers. `alert` is the whole NPA packet (IEEE 1284.1,
 * first byte 0xA5, numbers big-endian), `alertLength` its length in bytes.
 */
typedef void (*QvnAlertCallback)(uint32_t printerHandle, const uint8_t* alert, uint32_t alertLength,
                                 uint32_t clientId);

/*
 * The library's own view of a device changed. Categories: 1 printer job (ids: 1 busy printing, 2 error, 3
 * idle, 4 job starting, 5 first data of the job written, 6 job ending, 7 job cancelled, 8 the job's true
 * end), 2 HID event (id chosen by the device; `data` is null and `dataLength` 0), 3 scan progress (ids: 50
 * scan started, 51 scan data ended, 53 scan job ended).
 */
typedef void (*QvnNotificationCallback)(uint32_t deviceHandle, uint32_t category, uint32_t notificationId,
                                        const uint8_t* data, uint32_t dataLength, uint32_t clientId);

/*
 * A scanner delivered data or an alert. `job` is 0 from Cpd scanners and the identifier of the client that
 * started the job from Bpd scanners. `event` is the client's registered mask from Cpd scanners; from Bpd
 * scanners it is one bit, 0x1000 for scan data and 0x2000 or 0x4000 for an alert, whose text is `data`
 * without a terminator. From Cpd scanners `data` is one whole ESC command: a block of scan data (1B 's' 'd',
 * the payload's length in bytes 3 and 4, low byte first, the payload from byte 8 on) or a status (1B 'S' 'S',
 * its code in byte 3: 0x0B when the connection to the device was lost, else the device's). A status ends the
 * page and with it the job: end it, and start anew for the next sheet. The next data is delivered when the
 * callback has returned; a Bpd scanner tells its clients one thing after the other. The result is written to
 * the log and has no other effect; return 0.
 */
typedef uint32_t (*QvnScanDataCallback)(uint32_t clientId, uint32_t job, uint32_t scannerHandle,
                                        uint32_t event, const uint8_t* data, uint32_t dataLength);

/* A HID sent a report of `reportLength` bytes. */
typedef void (*QvnHidReportCallback)(uint32_t clientId, uint32_t hidHandle, const uint8_t* report,
                                     uint32_t reportLength);

/* ---- Library and clients ------------------------------------------------------------------------ */

/*
 * Brings the library up in this process. Calls nest: only the first does something, and the library stays
 * up until QvnUninitialize has been called as often. Transports are loaded later, each on its first use.
 * While another thread takes the library down it waits for that; inside a callback it returns 170 then.
 * Returns 0, or the code of what could not be set up; the call then does not count.
 */
QVN_EXPORT uint32_t QvnInitialize(void);

/*
 * Undoes one QvnInitialize. The last one ends all registrations, unloads the transports and frees
 * everything; close devices before it. It also ends logging for the rest of the process. Calls beyond the
 * last do no harm, and return at once.
 * Returns 0; 170 the last one inside a callback; or the code of a failure on the way.
 */
QVN_EXPORT uint32_t QvnUninitialize(void);

/*
 * Gives the caller a client identifier, never 0, different from the others given in this process. Ask once
 * and keep it. Works before QvnInitialize.
 *   clientId  out, required.
 * Returns 0; 87.
 */
QVN_EXPORT uint32_t QvnGetClientId(uint32_t* clientId);

/*
 * Accepted and ignored; for clients written against it.
 *   key, value  required.
 * Returns 0; 87.
 */
QVN_EXPORT uint32_t QvnSetClientInfo(uint32_t clientId, const char* key, const char* value);

/* ---- Printers ----------------------------------------------------------------------------------- */

/*
 * Opens a printer for the client. Opens count, per client and for the printer; only the first reaches the
 * device. When that fails, the printer's transport is asked to find the device anew, and the open is tried
 * once more. Match each success with QvnClosePrinter.
 * Returns 0; 6 no such printer; 170 held by another client, at once; else what the device's transport
 * answers to the second try.
 */
QVN_EXPORT uint32_t QvnOpenPrinter(uint32_t clientId, uint32_t handle);

/*
 * Undoes one open of the client. The client's last close while it owns the job cancels and ends that job;
 * the printer's last close ends the connection, the registrations for alerts, and a job that is left.
 * Returns 0; 6; 1 the client has no open; else what the transport answers to the end of the connection.
 */
QVN_EXPORT uint32_t QvnClosePrinter(uint32_t clientId, uint32_t handle);

/*
 * Takes the printer out of the registry. A later discovery may store it again.
 * Returns 0; 6 the handle is 0; 170 it is in use in this process; else the registry's code.
 */
QVN_EXPORT uint32_t QvnDeletePrinter(uint32_t clientId, uint32_t handle);

/*
 * Starts a print job; on success the client owns it until QvnEndJobPrinter and no other client can start
 * one. A Cpd printer that rejects the job still gives 0: its data is then taken and dropped until the job
 * is ended.
 *   spoolerJobId  the job's number at the spooler, or 0.
 *   printObject   the name of the queue; required.
 *   hostName, jobName, userName  or null for empty; an empty user name is sent as one blank.
 * Returns 0; 6; 87; 5 a job is open, or the client identifier is 0; 1 the printer is not open; else what
 * the device or its transport answers.
 */
QVN_EXPORT uint32_t QvnStartJobPrinter(uint32_t clientId, uint32_t handle, uint32_t spoolerJobId,
                                       const char* printObject, const char* hostName, const char* jobName,
                                       const char* userName);

/*
 * Gives the job its next data. With the buffered writer (setting CpdPrinterMwo, on by default) the data is
 * copied and sent later by a thread of the printer, and the call returns before the device has it; a device
 * that is slow delays the call by up to 5 s. Without it the call returns when the transport has sent the
 * data. After a cancel (QvnCancelJobPrinter) this call performs the cancel and later ones drop their data.
 * A Cpd job is complete only when its last call's data ends with the end-of-job marker, the eight bytes
 * 1B 2A 82 00 00 00 00 AC; QvnEndJobPrinter cancels it at the device otherwise. PJL lines are passed on like
 * all data; a Bpd printer also takes the job's account number from them.
 *   buffer, bufferSize  the data; both required.
 *   bytesWritten        out, required: how many bytes were taken, whatever the result. Less than bufferSize:
 *                       pass the rest again.
 * Returns 0; 6; 87; 5 the client does not own the job; 1 another thread ends the job; 122 the buffers are
 * full: pause, then pass what was not taken again; when the job was cancelled the cancel's result, then 1;
 * else what the device's transport answers, which can be after a part was taken (1460 the device takes
 * nothing now: pass the rest; 64 the connection is lost: end the job). With the buffered writer a lost device
 * is not told of but by 122 with nothing taken, for ever, and by the notification 2: give up after a time of
 * that with QvnCancelJobPrinter and QvnEndJobPrinter.
 */
QVN_EXPORT uint32_t QvnWritePrinter(uint32_t clientId, uint32_t handle, const uint8_t* buffer,
                                    uint32_t bufferSize, uint32_t* bytesWritten);

/*
 * Ends the job: sends what is still buffered, tells the device, and on a Cpd printer waits for the job's
 * true end for up to the setting TeojDuration (60 s). The client no longer owns the job, whatever the
 * result. Of a buffered job whose device is lost it does not return until QvnCancelJobPrinter is called from
 * another thread; a lost Cpd printer then costs another 30 s or more. It returns 0 also when it has cancelled
 * the job, because its data was not complete or it was asked to.
 * Returns 0; 6; 5 the client does not own a job; 170 a buffered job, inside a callback; 1359 no device; else
 * what the device or its transport answers (1460: no answer in time).
 */
QVN_EXPORT uint32_t QvnEndJobPrinter(uint32_t clientId, uint32_t handle);

/*
 * Asks for the printer's job to be cancelled; it takes effect at the end of the write that is running, else
 * at the next write, be it the client's or, while QvnEndJobPrinter sends what is buffered, one of the
 * printer's own thread. The job must still be ended. For use from another thread than the writing one. No
 * effect without a job. A Bpd printer prints what it has begun: only a job whose writes fail can be
 * cancelled, and then nothing but closing the printer ends it.
 *
 * Returns 0; 6 the handle is 0.
 */
QVN_EXPORT uint32_t QvnCancelJobPrinter(uint32_t clientId, uint32_t handle);

/*
 * Sends one NPA packet (IEEE 1284.1) and waits for its reply. Refused are packets that are malformed, that
 * start or end a job (command 05 00 and 05 01), and the 9-byte extended alert registration (E0 73 01):
 * these belong to the library.
 *   request, requestLength  the whole packet; the pointer is required.
 *   reply, replySize        where the whole reply goes; the pointer is required.
 *   replyLength             out, required: the reply's length; 0 on failure, the size that would do with
 *                           122.
 * Returns 0; 6; 87; 5 a refused packet; 22 the device rejected the command; 1 the printer is printing (a Cpd
 * printer then answers the cache request from the last cache read; a Bpd printer exchanges on when there were
 * registrations for alerts as the job began), takes no packets or is not open; 1460 no reply in time; 122 the
 * reply is larger than replySize: it is lost, repeat the exchange with a larger buffer; else what the
 * transport answers.
 */
QVN_EXPORT uint32_t QvnExchangeNpaPrinter(uint32_t clientId, uint32_t handle, const uint8_t* request,
                                          uint32_t requestLength, uint8_t* reply, uint32_t replySize,
                                          uint32_t* replyLength);

/*
 * Reads the printer's status cache: a 7-byte header and then entries, each an id (16-bit, big-endian), a
 * length n (8-bit) and n bytes. At most 1024 bytes.
 *   buffer, required  required; bufferSize may be 0 to ask for the size.
 * Returns 0; 6; 87; 122; 1 a Bpd printer, which has none; else what the device or its transport answers.
 */
QVN_EXPORT uint32_t QvnGetCachePrinter(uint32_t clientId, uint32_t handle, uint8_t* buffer,
                                       uint32_t bufferSize, uint32_t* required);

/*
 * The printer's state as the library sees it: 1 printing, 2 error, 3 idle; of a Bpd printer always 3. Does
 * not ask the device.
 *   state  out, required; tested before the handle.
 * Returns 0; 87; 6.
 */
QVN_EXPORT uint32_t QvnGetCurrentStatePrinter(uint32_t clientId, uint32_t handle, uint32_t* state);

/*
 * Reads a Long attribute.
 *   key, value  required; *value is 0 on failure.
 * Returns 0; 6; 87; 1168; 1629.
 */
QVN_EXPORT uint32_t QvnGetLongPrinter(uint32_t clientId, uint32_t handle, const char* key, uint32_t* value);

/*
 * Reads a String attribute as 8-bit text.
 *   key, buffer, bufferSize, required  all required.
 * Returns 0; 6; 87; 122; 1168; 1629.
 */
QVN_EXPORT uint32_t QvnGetStringPrinter(uint32_t clientId, uint32_t handle, const char* key, char* buffer,
                                        uint32_t bufferSize, uint32_t* required);

/*
 * Reads a String attribute as 16-bit characters in the machine's byte order, converted from the multibyte
 * encoding of the C locale in force. The whole buffer is zeroed first. *required is 2 bytes per character
 * and 2 for the terminator.
 *   key, buffer, bufferSize (bytes), required  all required.
 * Returns 0; 6; 87; 122; 1168; 1629.
 */
QVN_EXPORT uint32_t QvnGetWideStringPrinter(uint32_t clientId, uint32_t handle, const char* key,
                                            uint8_t* buffer, uint32_t bufferSize, uint32_t* required);

/*
 * Reads a ByteArray attribute.
 *   key, buffer, required  required; bufferSize may be 0 to ask for the size.
 * Returns 0; 6; 87; 122; 1168; 1629.
 */
QVN_EXPORT uint32_t QvnGetByteArrayPrinter(uint32_t clientId, uint32_t handle, const char* key,
                                           uint8_t* buffer, uint32_t bufferSize, uint32_t* required);

/*
 * Sets a Long attribute: offers it to the device's transport and, when that accepts it, stores it.
 *   key  required; its access must be Writeable.
 * Returns 0; 6; 87 (also for a ReadOnly key); 1629; else what the transport answers: nothing is then
 * changed.
 */
QVN_EXPORT uint32_t QvnSetLongPrinter(uint32_t clientId, uint32_t handle, const char* key, uint32_t value);

/*
 * Sets a String attribute, as QvnSetLongPrinter does.
 *   key, value   required.
 *   valueLength  how many bytes of `value` to take at most: a terminator before that ends it.
 * Returns as QvnSetLongPrinter; also 87 for a value that contains the closing tag of its own attribute.
 */
QVN_EXPORT uint32_t QvnSetStringPrinter(uint32_t clientId, uint32_t handle, const char* key,
                                        const char* value, uint32_t valueLength);

/*
 * Sets a ByteArray attribute, as QvnSetLongPrinter does.
 *   key, bytes, length  all required.
 * Returns as QvnSetLongPrinter.
 */
QVN_EXPORT uint32_t QvnSetByteArrayPrinter(uint32_t clientId, uint32_t handle, const char* key,
                                           const uint8_t* bytes, uint32_t length);

/*
 * Registers the client for the printer's alerts; a second registration of the same client replaces the
 * first. The printer must be open. The callback runs on the transport's thread.
 *   mask      the alerts wanted, not 0. Device status 0x1 to 0x200, extension 0x400 to 0x40000, panel
 *             0x80000, extended 0x100000, extended with language 0x200000 to 0x2000000.
 *   callback  required; used until the client unregisters or the printer is closed for the last time.
 * After a power-on reset (an alert FF 01 00 00) unregister and register again.
 * Returns 0; 6; 87 (also for a client identifier or a mask of 0); 1 the printer accepted no registration;
 * 1359.
 */
QVN_EXPORT uint32_t QvnRegisterForAlertsPrinter(uint32_t clientId, uint32_t handle, uint32_t mask,
                                                QvnAlertCallback callback);

/* Ends the client's alert registration. Returns 0; 6; 1 there is none; 1359. */
QVN_EXPORT uint32_t QvnUnregisterForAlertsPrinter(uint32_t clientId, uint32_t handle);

/*
 * Registers the client for the printer's notifications (QvnNotificationCallback). The printer must be open.
 * The callback runs on the thread that changes the state: a client's, the printer's writer or the
 * transport's.
 *   category  kept with the registration; it does not filter, every client hears every category.
 *   callback  required; used until the client unregisters or the printer is closed for the last time.
 * Returns 0; 6; 87 (also for a client identifier of 0); 1359.
 */
QVN_EXPORT uint32_t QvnRegisterForNotificationsPrinter(uint32_t clientId, uint32_t handle, uint32_t category,
                                                       QvnNotificationCallback callback);

/* Ends the client's notification registration. Returns 0; 6; 1359; else the printer's answer. */
QVN_EXPORT uint32_t QvnUnregisterForNotificationsPrinter(uint32_t clientId, uint32_t handle);

/* ---- Scanners ----------------------------------------------------------------------------------- */

/*
 * Opens a scanner for the client, as QvnOpenPrinter does a printer. Returns 0; 6; 170; else the
 * transport's.
 */
QVN_EXPORT uint32_t QvnOpenScanner(uint32_t clientId, uint32_t handle);

/* Undoes one open; the last close ends the connection. Returns 0; 6; else what the transport answers. */
QVN_EXPORT uint32_t QvnCloseScanner(uint32_t clientId, uint32_t handle);

/* Takes the scanner out of the registry. Returns as QvnDeletePrinter. */
QVN_EXPORT uint32_t QvnDeleteScanner(uint32_t clientId, uint32_t handle);

/*
 * Starts a scan job. Its data arrives at the callbacks registered with QvnRegisterForAsyncDataScanner.
 *   job  passed to the device's family unchanged and not dereferenced here; may be null.
 * A Bpd scanner's job is started in the background with the client's job parameters; when that fails the
 * alert "Scanner.CommError" (0x4000) tells it, and the job must be ended all the same.
 * Returns 0; 6; 1 not open, or a scan runs; 170 another job is active (Bpd); else what the transport answers.
 */
QVN_EXPORT uint32_t QvnStartJobScanner(uint32_t clientId, uint32_t handle, void* job);

/*
 * Ends the scan job. After a cancel it waits for the device's last status for up to the setting
 * ScanCancelWaitDuration (60 s). The job of a Bpd scanner is cancelled when it still runs, and its parameters
 * are forgotten. A failure leaves a Bpd scanner's job to be ended again.
 * Returns 0; 6; 1 no job to end; of Bpd scanners also 87 another client's job, 5 it is being ended already,
 * 170 inside a callback; of Cpd scanners 170 inside a callback when a last status is to be waited for; else
 * what the device or its transport answers.
 */
QVN_EXPORT uint32_t QvnEndJobScanner(uint32_t clientId, uint32_t handle);

/*
 * Tells the device to abort the scan; the job must still be ended. Bpd scanners are cancelled by ending the
 * job instead.
 * Returns 0; 6; 1 no scan runs, or a Bpd scanner.
 */
QVN_EXPORT uint32_t QvnCancelJobScanner(uint32_t clientId, uint32_t handle);

/*
 * Sends one command to the scanner (Cpd: an ESC command with its 8-byte header) and waits for the reply.
 *   request, requestLength, reply, replySize, replyLength  all required; replyLength as in
 *   QvnExchangeNpaPrinter.
 * Returns 0; 6; 87; 1 not open or a scan runs; 1460 no reply in time; 122 the reply is larger than
 * replySize and lost; else what the device or its transport answers.
 */
QVN_EXPORT uint32_t QvnExchangeDataScanner(uint32_t clientId, uint32_t handle, const uint8_t* request,
                                           uint32_t requestLength, uint8_t* reply, uint32_t replySize,
                                           uint32_t* replyLength);

/* Reads a String attribute; arguments and results as QvnGetStringPrinter. */
QVN_EXPORT uint32_t QvnGetStringScanner(uint32_t clientId, uint32_t handle, const char* key, char* buffer,
                                        uint32_t bufferSize, uint32_t* required);

/* Reads a Long attribute; arguments and results as QvnGetLongPrinter. */
QVN_EXPORT uint32_t QvnGetLongScanner(uint32_t clientId, uint32_t handle, const char* key, uint32_t* value);

/*
 * The scanner's state number: 0 from Cpd scanners in every state.
 *   state  out, required; tested before the handle.
 * Returns 0; 87; 6; 1 from Bpd scanners.
 */
QVN_EXPORT uint32_t QvnGetCurrentStateScanner(uint32_t clientId, uint32_t handle, uint32_t* state);

/*
 * Sets a parameter of the client's next scan job, for example "Scan.Param.Resolution" to "300".
 *   key, value  required; docs/client-guide.md lists the keys.
 * A Bpd scanner's parameters are kept for the client, whatever scanner it uses, until its job ends.
 * Returns 0; 6; 87 (also for "</0>" in the key or "</1>" in the value); 1 not open or a scan runs; of Bpd
 * scanners also 87 a key that cannot be an XML tag or a value with "<" or "&"; else what the device or its
 * transport answers.
 */
QVN_EXPORT uint32_t QvnSetJobStringScanner(uint32_t clientId, uint32_t handle, const char* key,
                                           const char* value);

/*
 * The same with a number, which is written as a signed 32-bit decimal: 4294967295 becomes -1.
 *   key, value  required; a value of 0 returns 87 (pass "0" to QvnSetJobStringScanner).
 * Returns as QvnSetJobStringScanner.
 */
QVN_EXPORT uint32_t QvnSetJobLongScanner(uint32_t clientId, uint32_t handle, const char* key, uint32_t value);

/*
 * Registers the client for the scanner's data and alerts. The callback runs on the transport's thread; of a
 * Bpd scanner that of an alert which the library raises itself may run on any thread, a client's included.
 *   mask      Bpd scanners: the kinds wanted, 0x1000 scan data, 0x2000 and 0x4000 alerts. Cpd scanners pass
 *             it to the callback unchanged.
 *   callback  not tested; used until the client unregisters.
 * Returns 0 whatever the scanner answers; 6 the handle is 0.
 */
QVN_EXPORT uint32_t QvnRegisterForAsyncDataScanner(uint32_t clientId, uint32_t handle, uint32_t mask,
                                                   QvnScanDataCallback callback);

/*
 * Ends that registration. A Bpd scanner's ends with the last close too; a Cpd scanner's does not, and cannot
 * be ended while the scanner is not open. Returns 0 whatever the scanner answers; 6 the handle is 0.
 */
QVN_EXPORT uint32_t QvnUnregisterForAsyncDataScanner(uint32_t clientId, uint32_t handle);

/* ---- HIDs --------------------------------------------------------------------------------------- */

/*
 * Opens a HID for the client, as QvnOpenPrinter does a printer.
 * Returns 0; 6; 52 or 170 held by another client, at once; else what the transport answers.
 */
QVN_EXPORT uint32_t QvnOpenHid(uint32_t clientId, uint32_t handle);

/* Undoes one open; the last close ends the connection. Returns 0; 6; else what the transport answers. */
QVN_EXPORT uint32_t QvnCloseHid(uint32_t clientId, uint32_t handle);

/* Takes the HID out of the registry. Returns as QvnDeletePrinter. */
QVN_EXPORT uint32_t QvnDeleteHid(uint32_t clientId, uint32_t handle);

/*
 * Registers the client for the HID's reports; a client registers once per HID. Empty reports and the null
 * report (01 01 and six zero bytes) are not delivered. The callback runs on the transport's thread.
 *   callback  required; used until the client unregisters.
 * Returns 0; 6; 1 the callback is null or the HID is not open.
 */
QVN_EXPORT uint32_t QvnRegisterForReportsHid(uint32_t clientId, uint32_t handle,
                                             QvnHidReportCallback callback);

/*
 * Ends that registration. Returns 0, also when there was none or the HID is not open; 6 the handle is 0.
 */
QVN_EXPORT uint32_t QvnUnregisterForReportsHid(uint32_t clientId, uint32_t handle);

/*
 * Registers the client for the HID's events, category 2 of QvnNotificationCallback; an event is told when
 * its id differs from the last one told. The HID need not be open. The callback runs on the transport's
 * thread.
 *   callback  required; used until the client unregisters.
 * Returns 0; 6; 87 (also for a client identifier of 0).
 */
QVN_EXPORT uint32_t QvnRegisterForNotificationsHid(uint32_t clientId, uint32_t handle,
                                                   QvnNotificationCallback callback);

/* Ends that registration. Returns 0, also when there was none; 6; 87 a client identifier of 0. */
QVN_EXPORT uint32_t QvnUnregisterForNotificationsHid(uint32_t clientId, uint32_t handle);

/*
 * Reads a Long attribute. Works before QvnInitialize.
 *   key, value  required; tested before the handle.
 * Returns 0; 87; 6; 1168; 1629.
 */
QVN_EXPORT uint32_t QvnGetLongHid(uint32_t clientId, uint32_t handle, const char* key, uint32_t* value);

/* Reads a String attribute; arguments and results as QvnGetStringPrinter. */
QVN_EXPORT uint32_t QvnGetStringHid(uint32_t clientId, uint32_t handle, const char* key, char* buffer,
                                    uint32_t bufferSize, uint32_t* required);

/*
 * The id of the last event that the HID sent to this process; 0 when there was none.
 *   state  out, required; tested before the handle.
 * Returns 0; 87; 6.
 */
QVN_EXPORT uint32_t QvnGetCurrentStateHid(uint32_t clientId, uint32_t handle, uint32_t* state);

/* ---- Enumeration and discovery ------------------------------------------------------------------ */
/*
 * `transport` is the name of a transport ("USB1", "PAR1", "HBN1", "HBN3", "IPv4") or one of the kinds
 * "LOCAL_TRANSPORT", "NETWORK_TRANSPORT" and "ALL_TRANSPORT", which stand for the registered transports of
 * that kind. A name need not be registered to be enumerated.
 */

/*
 * Calls the callback for each stored printer of the transport. Does not talk to any device.
 *   transport, callback  required.
 *   filter  an attribute text such as "<Portname>LAB1</Portname>", or null. Where it carries Address,
 *           Portname or PortType only printers with an equal value (compared without case) are told.
 * Returns 0, also when there is none; 87.
 */
QVN_EXPORT uint32_t QvnEnumPrinters(uint32_t clientId, const char* transport, const char* filter,
                                    QvnDeviceFoundCallback callback);

/* The same for scanners; `ignored` has no meaning. Returns 0; 87. */
QVN_EXPORT uint32_t QvnEnumScanners(uint32_t clientId, const char* transport, const char* ignored,
                                    QvnDeviceFoundCallback callback);

/* The same for HIDs; `ignored` has no meaning. Returns 0; 87. */
QVN_EXPORT uint32_t QvnEnumHids(uint32_t clientId, const char* transport, const char* ignored,
                                QvnDeviceFoundCallback callback);

/*
 * Calls the callback for each local print queue whose port is a stored scanner of the default model and of
 * the transport. May run one discovery when a queue's port is known only as a printer.
 *   transport, callback  required.
 * Returns 0, also when the queues cannot be listed; 87.
 */
QVN_EXPORT uint32_t QvnEnumWindowsScanners(uint32_t clientId, const char* transport,
                                           QvnQueueFoundCallback callback);

/* The same for HIDs. Returns 0; 87. */
QVN_EXPORT uint32_t QvnEnumWindowsHids(uint32_t clientId, const char* transport,
                                       QvnQueueFoundCallback callback);

/*
 * Finds the printer with a port name (compared without case). When none is stored, the local transports are
 * searched once.
 *   portName  required; "\\server\share" stands for the port of the local queue shared as `share`.
 *   handle    out, required: 0 unless found.
 * Returns 0; 87; 1796 there is none; 1359 a stored device cannot be read.
 */
QVN_EXPORT uint32_t QvnEnumSpecificPrinter(uint32_t clientId, const char* portName, uint32_t* handle);

/* The same for scanners, by the port name that the device carries. */
QVN_EXPORT uint32_t QvnEnumSpecificScanner(uint32_t clientId, const char* deviceName, uint32_t* handle);

/* The same for HIDs; a shared queue's name is not looked up. */
QVN_EXPORT uint32_t QvnEnumSpecificHid(uint32_t clientId, const char* deviceName, uint32_t* handle);

/*
 * Lets the registered transports find devices and stores each one found. A stored printer keeps its port
 * name and its TrueEndOfJob setting.
 *   transport  required.
 *   options    a text that the transport defines, or null.
 * Returns 87; else the result of the last transport asked (0 when none is registered); the failures of the
 * others are in the log.
 */
QVN_EXPORT uint32_t QvnDiscovery(uint32_t clientId, const char* transport, const char* options);

/*
 * Tells whether a port name is free.
 *   name  required; compared exactly.
 * Returns 0 free; 52 a stored printer has it; 87.
 */
QVN_EXPORT uint32_t QvnValidatePortName(uint32_t clientId, const char* name);

/*
 * Reads the options that the transport's discovery uses by default, a text that the transport defines.
 *   transport, buffer, bufferSize, required  all required.
 * Returns 0; 87; 122; 1 the transport is not registered or has none.
 */
QVN_EXPORT uint32_t QvnGetDiscoveryDefaults(uint32_t clientId, const char* transport, char* buffer,
                                            uint32_t bufferSize, uint32_t* required);

/*
 * Sets them.
 *   transport, defaults  required.
 * Returns 0; 87; 1 the transport is not registered or has none; else what the transport answers.
 */
QVN_EXPORT uint32_t QvnSetDiscoveryDefaults(uint32_t clientId, const char* transport, const char* defaults);

/* ---- Administration ----------------------------------------------------------------------------- */
/*
 * For installers and configuration tools, one at a time: these functions take no lock against each other.
 */

/*
 * Sets the library up on the machine: has the registry script "qr__.loc" imported (the one in the system
 * directory, else the one that came with the library), for which it waits at most 15 s, and installs the
 * transports that are registered then. Needs no QvnInitialize.
 * Returns 0 always. Failures are in the log if the library is initialised; a script that cannot be imported
 * changes nothing.
 */
QVN_EXPORT uint32_t QvnInstall(void);

/*
 * Takes the library off the machine: uninstalls the registered transports and removes its settings, its
 * registered transports and its stored devices from the registry; with the setting DeleteStoreOnUninstall
 * also what installations share, when this was the last. Ends logging for the rest of the process. Needs no
 * QvnInitialize. Returns 0 always; failures leave things in place.
 */
QVN_EXPORT uint32_t QvnUninstall(void);

/*
 * Registers the print monitor with the spooler, named after the default model, and waits at most 5 s for it
 * to report that it runs; when it does not, the answer is the same.
 * Returns 0; 183 or 3006 it is registered already; 2 the default model has no name; else the spooler's error.
 */
QVN_EXPORT uint32_t QvnAddMonitor(void);

/*
 * Registers a transport under the name and kind that its module gives, installs it and discovers its
 * devices.
 *   moduleFileName  required. A bare name is found by the module search; a registered path is used as it
 *                   is.
 * Returns 0; 87 (also when it cannot be registered); 126 no such module; 127 an entry point is missing; 193
 * not a module; else what the module answers.
 */
QVN_EXPORT uint32_t QvnAddTransport(const char* moduleFileName);

/*
 * Takes a transport's registration away and unloads it; stored devices stay. No device of the transport may
 * be open.
 *   name  the transport's name or its module's file name; required.
 * Returns 0; 87; the code of loading `name` as a module (126 no such module), also after the registration
 * of a transport of that name has been taken away.
 */
QVN_EXPORT uint32_t QvnRemoveTransport(const char* name);

/* Told before the machine sleeps. Does nothing. Returns 0. */
QVN_EXPORT uint32_t QvnSuspend(void);

/* Told after the machine woke. Does nothing. Returns 0. */
QVN_EXPORT uint32_t QvnResume(void);

/*
 * Reads what print jobs say about this machine. A key without a value gets its default, which is stored:
 * the first 13 characters of the computer's name, a PIN of four digits, the code page's number.
 *   key  the descriptor of PcName, PinNumber or CodePage; required.
 *   buffer, bufferSize, required  all required. A default needs 14 bytes for PcName and 5 for the others.
 * Returns 0; 87; 122; 1168 another key that is not stored.
 */
QVN_EXPORT uint32_t QvnGetHostInfo(uint32_t clientId, const char* key, char* buffer, uint32_t bufferSize,
                                   uint32_t* required);

/*
 * Sets it.
 *   key, value, valueLength  all required. The value is read up to its terminator; the length is only
 *                            checked.
 * Returns 0; 87 (also for another key and for a value that contains its closing tag, "</PcName>").
 */
QVN_EXPORT uint32_t QvnSetHostInfo(uint32_t clientId, const char* key, const char* value,
                                   uint32_t valueLength);

#ifdef __cplusplus
}
#endif

#endif
