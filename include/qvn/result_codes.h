/*
 * Result codes: unsigned 32-bit numbers from the published system error codes; 0 is success.
 *
 * Every exported function returns one, every transport operation answers one. The codes below are those that
 * the library and its own transports produce; any other code that a transport, the registry or the operating
 * system returns reaches the client unchanged.
 */
#ifndef QVN_RESULT_CODES_H
#define QVN_RESULT_CODES_H

#define QRN_ERROR_SUCCESS 0u
/* The operation is not valid in the device's current state, or the library is not initialised. */
#define QRN_ERROR_INVALID_FUNCTION 1u
/* The caller does not own the job or hold the device, or the packet is one that clients may not send. */
#define QRN_ERROR_ACCESS_DENIED 5u
/* No such device: a handle of 0, or one that the table of its kind cannot supply. */
#define QRN_ERROR_INVALID_HANDLE 6u
/* What a device sent cannot be told apart. */
#define QRN_ERROR_INVALID_DATA 13u
/* The device answered a command with its reject flag set. */
#define QRN_ERROR_BAD_COMMAND 22u
/* A name is in use already, or another client holds the device. */
#define QRN_ERROR_DUP_NAME 52u
/* The device ended the connection. */
#define QRN_ERROR_NETNAME_DELETED 64u
/* A required pointer, name or size is null or zero, or a key is not one of those accepted. */
#define QRN_ERROR_INVALID_PARAMETER 87u
/* The disk is full. */
#define QRN_ERROR_DISK_FULL 112u
/* The caller's buffer is too small (the required size is reported), or the print buffers are full: retry. */
#define QRN_ERROR_INSUFFICIENT_BUFFER 122u
/* The device is open or in use by another client. */
#define QRN_ERROR_BUSY 170u
/* The print monitor is installed already. */
#define QRN_ERROR_ALREADY_EXISTS 183u
/* A wait timed out. */
#define QRN_ERROR_WAIT_TIMEOUT 258u
/* The device cannot be talked to, though it is there: it stalls whatever it is sent. */
#define QRN_ERROR_IO_DEVICE 1117u
/* The device is not plugged in. */
#define QRN_ERROR_DEVICE_NOT_CONNECTED 1167u
/* A registry value or a stored attribute does not exist. */
#define QRN_ERROR_NOT_FOUND 1168u
/* An operation was ended by who asked for it. */
#define QRN_ERROR_CANCELLED 1223u
/* Nothing listens at the device's address. */
#define QRN_ERROR_CONNECTION_REFUSED 1225u
/* The connection is not open. */
#define QRN_ERROR_CONNECTION_INVALID 1229u
/* No way leads to the device's network, or to the device. */
#define QRN_ERROR_NETWORK_UNREACHABLE 1231u
#define QRN_ERROR_HOST_UNREACHABLE 1232u
/* This side ended the connection meanwhile. */
#define QRN_ERROR_CONNECTION_ABORTED 1236u
/* A transport module is built for another version of the interface. */
#define QRN_ERROR_REVISION_MISMATCH 1306u
/* An internal step failed. */
#define QRN_ERROR_INTERNAL_ERROR 1359u
/* The device did not answer in time. */
#define QRN_ERROR_TIMEOUT 1460u
/* A stored attribute was read as another type than its descriptor gives. */
#define QRN_ERROR_DATATYPE_MISMATCH 1629u
/* No stored device carries the port or device name. */
#define QRN_ERROR_UNKNOWN_PORT 1796u
/* As QRN_ERROR_ALREADY_EXISTS, from the spooler. */
#define QRN_ERROR_PRINT_MONITOR_ALREADY_INSTALLED 3006u

#endif
