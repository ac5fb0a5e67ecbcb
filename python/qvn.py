"""Printers, scanners and HID devices from Python, through the library QR__serv.

    import qvn

    with qvn.Library() as library, library.printer("IP_SIM0000001") as printer:
        printer.print(open("report.prn", "rb").read(), "report")

The functions of the C interface are attributes of `qvn.c`, with the arguments that qvn.h gives; the classes below are
made of them. A failure is a QvnError.
"""

from __future__ import annotations

import atexit
import ctypes
import enum
import functools
import os
import queue
import re
import socket
import sys
import threading
import time
from typing import Any, Callable, Iterator, NamedTuple, Optional, TypeVar, Union

__all__ = ["Attribute", "DeviceState", "Hid", "Library", "Page", "PrintJob", "Printer", "QvnError", "Registration",
           "Result", "ScanError", "Scanner", "c"]

# ---- The C interface ----

# Every function with the types of its arguments: u uint32_t, U uint32_t*, s const char*, c char*, b const uint8_t*,
# B uint8_t*, p void*, and the callbacks below. All return uint32_t.
_FUNCTIONS: dict[str, str] = dict(re.findall(r"(\w+)\((\w*)\)", """
QvnInitialize() QvnUninitialize() QvnGetClientId(U) QvnSetClientInfo(uss) QvnOpenPrinter(uu) QvnClosePrinter(uu)
QvnDeletePrinter(uu) QvnStartJobPrinter(uuussss) QvnWritePrinter(uubuU) QvnEndJobPrinter(uu)
QvnCancelJobPrinter(uu) QvnExchangeNpaPrinter(uubuBuU) QvnGetCachePrinter(uuBuU) QvnGetCurrentStatePrinter(uuU)
QvnGetLongPrinter(uusU) QvnGetStringPrinter(uuscuU) QvnGetWideStringPrinter(uusBuU)
QvnGetByteArrayPrinter(uusBuU) QvnSetLongPrinter(uusu) QvnSetStringPrinter(uussu) QvnSetByteArrayPrinter(uusbu)
QvnRegisterForAlertsPrinter(uuuA) QvnUnregisterForAlertsPrinter(uu) QvnRegisterForNotificationsPrinter(uuuN)
QvnUnregisterForNotificationsPrinter(uu) QvnOpenScanner(uu) QvnCloseScanner(uu) QvnDeleteScanner(uu)
QvnStartJobScanner(uup) QvnEndJobScanner(uu) QvnCancelJobScanner(uu) QvnExchangeDataScanner(uubuBuU)
QvnGetStringScanner(uuscuU) QvnGetLongScanner(uusU) QvnGetCurrentStateScanner(uuU) QvnSetJobStringScanner(uuss)
QvnSetJobLongScanner(uusu) QvnRegisterForAsyncDataScanner(uuuS) QvnUnregisterForAsyncDataScanner(uu)
QvnOpenHid(uu) QvnCloseHid(uu) QvnDeleteHid(uu) QvnRegisterForReportsHid(uuR) QvnUnregisterForReportsHid(uu)
QvnRegisterForNotificationsHid(uuN) QvnUnregisterForNotificationsHid(uu) QvnGetLongHid(uusU)
QvnGetStringHid(uuscuU) QvnGetCurrentStateHid(uuU) QvnEnumPrinters(ussD) QvnEnumScanners(ussD) QvnEnumHids(ussD)
QvnEnumWindowsScanners(usQ) QvnEnumWindowsHids(usQ) QvnEnumSpecificPrinter(usU) QvnEnumSpecificScanner(usU)
QvnEnumSpecificHid(usU) QvnDiscovery(uss) QvnValidatePortName(us) QvnGetDiscoveryDefaults(uscuU)
QvnSetDiscoveryDefaults(uss) QvnInstall() QvnUninstall() QvnAddMonitor() QvnAddTransport(s)
QvnRemoveTransport(s) QvnSuspend() QvnResume() QvnGetHostInfo(uscuU) QvnSetHostInfo(ussu)
"""))

# Every callback: its name in qvn.h, what it returns (v: nothing) and its arguments.
_CALLBACKS: dict[str, tuple[str, str, str]] = {
    "D": ("QvnDeviceFoundCallback", "v", "uu"),
    "Q": ("QvnQueueFoundCallback", "v", "uss"),
    "A": ("QvnAlertCallback", "v", "ubuu"),
    "N": ("QvnNotificationCallback", "v", "uuubuu"),
    "S": ("QvnScanDataCallback", "u", "uuuubu"),
    "R": ("QvnHidReportCallback", "v", "uubu"),
}

_C_TYPES: dict[str, Any] = {"v": None, "u": ctypes.c_uint32, "U": ctypes.POINTER(ctypes.c_uint32),
                            "s": ctypes.c_char_p, "c": ctypes.c_char_p, "b": ctypes.c_char_p, "B": ctypes.c_char_p,
                            "p": ctypes.c_void_p}


@functools.cache
def _callback_type(code: str) -> Any:
    _, result, arguments = _CALLBACKS[code]
    # Bytes that are lent have no terminator, up to which a c_char_p would be read.
    return ctypes.CFUNCTYPE(_C_TYPES[result], *[ctypes.c_void_p if argument == "b" else _C_TYPES[argument]
                                                for argument in arguments])


class _Functions:
    """The exported functions, each looked up on its first use. QVN_LIBRARY names another file than the system's."""

    @functools.cached_property
    def _module(self) -> ctypes.CDLL:
        return ctypes.CDLL(os.environ.get("QVN_LIBRARY", "QR__serv.so.0"))

    def __getattr__(self, name: str) -> Any:
        if name not in _FUNCTIONS:
            raise AttributeError(name)
        function = getattr(self._module, name)
        function.restype = ctypes.c_uint32
        function.argtypes = [_callback_type(code) if code in _CALLBACKS else _C_TYPES[code]
                             for code in _FUNCTIONS[name]]
        setattr(self, name, function)
        return function


c = _Functions()


class Result(enum.IntEnum):
    """The result codes that the library itself gives."""

    SUCCESS = 0
    INVALID_FUNCTION = 1
    ACCESS_DENIED = 5
    INVALID_HANDLE = 6
    INVALID_DATA = 13
    BAD_COMMAND = 22
    DUP_NAME = 52
    NETNAME_DELETED = 64
    INVALID_PARAMETER = 87
    DISK_FULL = 112
    INSUFFICIENT_BUFFER = 122
    BUSY = 170
    ALREADY_EXISTS = 183
    WAIT_TIMEOUT = 258
    IO_DEVICE = 1117
    DEVICE_NOT_CONNECTED = 1167
    NOT_FOUND = 1168
    CANCELLED = 1223
    CONNECTION_REFUSED = 1225
    CONNECTION_INVALID = 1229
    NETWORK_UNREACHABLE = 1231
    HOST_UNREACHABLE = 1232
    CONNECTION_ABORTED = 1236
    REVISION_MISMATCH = 1306
    INTERNAL_ERROR = 1359
    TIMEOUT = 1460
    DATATYPE_MISMATCH = 1629
    UNKNOWN_PORT = 1796
    PRINT_MONITOR_ALREADY_INSTALLED = 3006


class QvnError(Exception):
    """A function's result was not 0: `code` is the result, `name` what result_codes.h calls it, or its number."""

    def __init__(self, code: int, what: str) -> None:
        self.code = code
        self.name = f"QRN_ERROR_{Result(code).name}" if code in set(Result) else str(code)
        super().__init__(f"{what}: {self.name} ({code})")


class ScanError(Exception):
    """The scanner refused a page or broke it off."""


def _call(name: str, *arguments: Any) -> None:
    result = getattr(c, name)(*arguments)
    if result != Result.SUCCESS:
        raise QvnError(result, name)


def _number(name: str, *arguments: Any) -> int:
    value = ctypes.c_uint32()
    _call(name, *arguments, ctypes.byref(value))
    return value.value


def _bytes(name: str, *arguments: Any) -> bytes:
    """What a function puts into its buffer, however much that is."""
    size = 1024
    while True:
        buffer, required = ctypes.create_string_buffer(size), ctypes.c_uint32()
        result = getattr(c, name)(*arguments, buffer, size, ctypes.byref(required))
        if result == Result.SUCCESS:
            return buffer.raw[:required.value]
        if result != Result.INSUFFICIENT_BUFFER or required.value <= size:
            raise QvnError(result, name)
        size = required.value


_inside = threading.local()  # depth: how many callbacks the thread is inside of


def _callback(code: str, function: Callable[..., None]) -> Any:
    """The function as C calls it. What it raises is reported as that of a thread is, and goes no further."""

    def call(*arguments: Any) -> Optional[int]:
        _inside.depth = getattr(_inside, "depth", 0) + 1
        try:
            function(*arguments)
        except BaseException:
            threading.excepthook(threading.ExceptHookArgs((*sys.exc_info(), threading.current_thread())))
        finally:
            _inside.depth -= 1
        return 0 if _CALLBACKS[code][1] == "u" else None

    return _callback_type(code)(call)


def _lent(data: Optional[int], length: int) -> bytes:
    return ctypes.string_at(data, length) if data else b""


def _encoded(text: Optional[str]) -> Optional[bytes]:
    return None if text is None else os.fsencode(text)


# ---- Attributes ----


def _descriptor(name: str, kind: str, access: str) -> str:
    return f"<Name>{name}</Name><Type>{kind}</Type><Access>{access}</Access>"


class Attribute(str, enum.Enum):
    """What devices are described by: device[Attribute.PORTNAME]."""

    DEVICE = _descriptor("Device", "String", "ReadOnly")
    HANDLE = _descriptor("Handle", "Long", "ReadOnly")
    PORTNAME = _descriptor("Portname", "String", "Writeable")
    ADDRESS = _descriptor("Address", "String", "Writeable")
    PORT_TYPE = _descriptor("PortType", "String", "Writeable")
    TRANSPORT = _descriptor("Transport", "String", "ReadOnly")
    TRANSPORT_TYPE = _descriptor("TransportType", "String", "ReadOnly")
    PRINTER_MODEL = _descriptor("Printer Model", "String", "ReadOnly")
    VID = _descriptor("Vid", "Long", "ReadOnly")
    PID = _descriptor("Pid", "Long", "ReadOnly")
    UNVERIFIED = _descriptor("Unverified", "Long", "ReadOnly")
    VERIFY = _descriptor("Verify", "Long", "Writeable")
    SILENT_INSTALL = _descriptor("SilentInstall", "String", "Writeable")
    TICK_COUNT = _descriptor("TickCount", "Long", "Writeable")
    PC_NAME = _descriptor("PcName", "String", "Writeable")
    CODE_PAGE = _descriptor("CodePage", "String", "Writeable")
    PIN_NUMBER = _descriptor("PinNumber", "String", "Writeable")
    TRUE_END_OF_JOB = _descriptor("TrueEndOfJob", "Long", "Writeable")
    MAX_WRITE_PACKET_SIZE = _descriptor("MaxWritePacketSize", "Long", "Writeable")
    NPA_REVISION_LEVEL = _descriptor("NpaRevisionLevel", "ByteArray", "Writeable")
    NPA_WRAPPING = _descriptor("NpaWrapping", "Long", "ReadOnly")
    ACKING_FOR_NPA_WRAPPING = _descriptor("AckingForNpaWrapping", "Long", "ReadOnly")
    TEOJ_TIMEOUT_ASAP = _descriptor("TeojTimeoutAsap", "Long", "Writeable")
    RESOLVE_ADDRESSES = _descriptor("ResolveAddresses", "Long", "Writeable")
    SPOOLER_JOB_ID = _descriptor("SpoolerJobId", "Long", "Writeable")
    NPA_SUPPORTED = _descriptor("NpaSupported", "Long", "Writeable")
    QUEUE_NAME = _descriptor("QueueName", "String", "Writeable")
    USER_NAME = _descriptor("UserName", "String", "Writeable")
    JOB_NAME = _descriptor("JobName", "String", "Writeable")
    HOST_NAME = _descriptor("HostName", "String", "Writeable")
    QUEUE_NUMBER = _descriptor("QueueNumber", "String", "Writeable")
    IP_ADDRESS = _descriptor("IpAddress", "Long", "Writeable")
    IP_PORT = _descriptor("IpPort", "Long", "ReadOnly")
    SUBNET = _descriptor("Subnet", "Long", "ReadOnly")
    BROADCAST = _descriptor("Broadcast", "Long", "ReadOnly")
    IP_MASK = _descriptor("IpMask", "Long", "ReadOnly")
    IP_GATEWAY = _descriptor("IpGateway", "Long", "ReadOnly")
    MAC_ADDRESS = _descriptor("MacAddress", "ByteArray", "ReadOnly")
    NICKNAME = _descriptor("Nickname", "String", "Writeable")
    IP_DEVICE_ADDRESS = _descriptor("IpDeviceAddress", "String", "Writeable")
    LOCAL_SUBNET = _descriptor("LocalSubnet", "Long", "Writeable")
    REMOTE_SUBNETS = _descriptor("RemoteSubnets", "String", "Writeable")
    LOCAL_IP_PORT = _descriptor("LocalIpPort", "Long", "Writeable")
    PORT_ID = _descriptor("PortId", "Long", "ReadOnly")
    CHANNEL_ID = _descriptor("ChannelId", "Long", "ReadOnly")
    USB_PORT = _descriptor("UsbPort", "Long", "ReadOnly")
    SERIAL_NUMBER = _descriptor("SerialNumber", "String", "ReadOnly")
    DEVICE_PATH = _descriptor("DevicePath", "String", "ReadOnly")
    USB_NAME = _descriptor("UsbName", "String", "ReadOnly")
    READ_PACKET_SIZE = _descriptor("ReadPacketSize", "Long", "ReadOnly")
    READ_PACKET_SIZE2 = _descriptor("ReadPacketSize2", "Long", "ReadOnly")
    WRITE_PACKET_SIZE = _descriptor("WritePacketSize", "Long", "ReadOnly")
    PORT_NUMBER = _descriptor("PortNumber", "Long", "ReadOnly")
    ENDPOINT1_TYPE = _descriptor("Endpoint1Type", "String", "ReadOnly")
    ENDPOINT2_TYPE = _descriptor("Endpoint2Type", "String", "ReadOnly")
    ENDPOINT3_TYPE = _descriptor("Endpoint3Type", "String", "ReadOnly")
    ENDPOINT1_DEVICE_PATH_SUFFIX = _descriptor("Endpoint1DevicePathSuffix", "String", "ReadOnly")
    ENDPOINT2_DEVICE_PATH_SUFFIX = _descriptor("Endpoint2DevicePathSuffix", "String", "ReadOnly")
    ENDPOINT3_DEVICE_PATH_SUFFIX = _descriptor("Endpoint3DevicePathSuffix", "String", "ReadOnly")
    ENDPOINT1_MAX_PACKET_SIZE = _descriptor("Endpoint1MaxPacketSize", "Long", "ReadOnly")
    ENDPOINT2_MAX_PACKET_SIZE = _descriptor("Endpoint2MaxPacketSize", "Long", "ReadOnly")
    ENDPOINT3_MAX_PACKET_SIZE = _descriptor("Endpoint3MaxPacketSize", "Long", "ReadOnly")
    IP_MASK_TEXT = _descriptor("IpMask", "String", "ReadOnly")
    ADAPTER_MODEL_NAME = _descriptor("AdapterModelName", "String", "Writeable")
    DISCOVERY_METHOD = _descriptor("DiscoveryMethod", "String", "Writeable")
    REFINER = _descriptor("Refiner", "String", "Writeable")
    SUBNETS = _descriptor("Subnets", "String", "Writeable")
    UNVERIFIED_ADDRESS = _descriptor("UnverifiedAddress", "String", "Writeable")
    RANGES = _descriptor("Ranges", "String", "Writeable")
    BROADCAST_TEXT = _descriptor("Broadcast", "String", "Writeable")
    UNICAST = _descriptor("Unicast", "String", "Writeable")
    MIN_ADDRESS = _descriptor("MinAddress", "String", "Writeable")
    MAX_ADDRESS = _descriptor("MaxAddress", "String", "Writeable")
    UDP_PORT = _descriptor("UdpPort", "Long", "Writeable")
    NUMBER_OF_PORTS = _descriptor("NumberOfPorts", "Long", "Writeable")
    WRITEABLE_PORT_NUMBER = _descriptor("PortNumber", "Long", "Writeable")
    BEEN_REFINED = _descriptor("BeenRefined", "Long", "Writeable")
    ADAPTER_PORTS = _descriptor("AdapterPorts", "ByteArray", "Writeable")
    PORT_NPA_STATUS = _descriptor("PortNpaStatus", "ByteArray", "Writeable")


# ---- Library ----


_Self = TypeVar("_Self")


class _Closing:
    """What the end of a with statement closes."""

    def __enter__(self: _Self) -> _Self:
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()

    def close(self) -> None:
        raise NotImplementedError


class Library(_Closing):
    """The library, initialised. close(), or the end of a with statement, closes its devices and takes it down."""

    def __init__(self) -> None:
        _call("QvnInitialize")
        self.client = _number("QvnGetClientId")
        self._devices: list[_Device] = []
        self._registrations: list[Registration] = []  # C has no reference to what it calls
        self._closed = False
        # No callback may come when Python has gone.
        atexit.register(self.close)

    def close(self) -> None:
        if self._closed:
            return
        self._closed = True
        atexit.unregister(self.close)
        try:
            for open_thing in self._devices[::-1] + self._registrations:
                open_thing.close()
        finally:
            _call("QvnUninitialize")

    def discover(self, transport: str = "ALL_TRANSPORT", options: Optional[str] = None) -> None:
        """Lets transports find devices; what `options` says is the transport's matter."""
        _call("QvnDiscovery", self.client, _encoded(transport), _encoded(options))

    def printers(self, transport: str = "ALL_TRANSPORT", filter: Optional[str] = None) -> list[Printer]:
        """The stored printers, not opened; `filter` is an attribute text such as "<Portname>LAB1</Portname>"."""
        return [Printer(self, handle) for handle in self._enumerate("QvnEnumPrinters", transport, filter)]

    def scanners(self, transport: str = "ALL_TRANSPORT") -> list[Scanner]:
        return [Scanner(self, handle) for handle in self._enumerate("QvnEnumScanners", transport)]

    def hids(self, transport: str = "ALL_TRANSPORT") -> list[Hid]:
        return [Hid(self, handle) for handle in self._enumerate("QvnEnumHids", transport)]

    def printer(self, device: Union[int, str]) -> Printer:
        """The printer of a handle or port name. It is not opened: `with` does that, and closes it."""
        return Printer(self, self._handle("QvnEnumSpecificPrinter", device))

    def scanner(self, device: Union[int, str]) -> Scanner:
        return Scanner(self, self._handle("QvnEnumSpecificScanner", device))

    def hid(self, device: Union[int, str]) -> Hid:
        return Hid(self, self._handle("QvnEnumSpecificHid", device))

    def add_transport(self, module: str) -> None:
        _call("QvnAddTransport", _encoded(module))

    def remove_transport(self, name: str) -> None:
        _call("QvnRemoveTransport", _encoded(name))

    def _enumerate(self, name: str, transport: str, filter: Optional[str] = None) -> list[int]:
        found: list[int] = []
        _call(name, self.client, _encoded(transport), _encoded(filter),
              _callback("D", lambda _client, handle: found.append(handle)))
        return found

    def _handle(self, name: str, device: Union[int, str]) -> int:
        return device if isinstance(device, int) else _number(name, self.client, _encoded(device))


class Registration(_Closing):
    """A callback that is registered, until close(), the end of a with statement, or its device is closed."""

    def __init__(self, device: _Device, what: str, callback: Any, *options: int) -> None:
        self._device, self._what, self._callback, self._closed = device, what, callback, False
        _call(f"QvnRegisterFor{what}{device.kind}", device.client, device.handle, *options, callback)
        device.library._registrations.append(self)

    def close(self) -> None:
        """When it returns no call is running, unless it is called inside a callback."""
        if self._closed:
            return
        self._closed = True
        device = self._device
        getattr(c, f"QvnUnregisterFor{self._what}{device.kind}")(device.client, device.handle)
        # A call that has not been waited for may need it.
        if not getattr(_inside, "depth", 0):
            device.library._registrations.remove(self)


class _Device(_Closing):
    """A stored device. `with` opens it; attributes can be read without. Each object is a client of its own."""

    kind: str

    def __init__(self, library: Library, handle: int) -> None:
        self.library, self.handle = library, handle
        self.client = _number("QvnGetClientId")
        self._open = False

    def __repr__(self) -> str:
        return f"<qvn.{self.kind} {self.handle}>"

    def __enter__(self: _Self) -> _Self:
        self.open()
        return self

    def open(self) -> None:
        if not self._open:
            _call(f"QvnOpen{self.kind}", self.client, self.handle)
            self._open = True
            self.library._devices.append(self)

    def close(self) -> None:
        """Ends the registrations and closes the device."""
        for registration in self.library._registrations[:]:
            if registration._device is self:
                registration.close()
        if self._open:
            self._open = False
            self.library._devices.remove(self)
            _call(f"QvnClose{self.kind}", self.client, self.handle)

    def delete(self) -> None:
        """Takes the device out of the registry."""
        _call(f"QvnDelete{self.kind}", self.client, self.handle)

    def __getitem__(self, attribute: str) -> Any:
        """A Long is an int, a String a str, a ByteArray bytes. QvnError NOT_FOUND when the device lacks it."""
        arguments = self.client, self.handle, _encoded(attribute)
        if "<Type>Long<" in attribute:
            return _number(f"QvnGetLong{self.kind}", *arguments)
        if "<Type>ByteArray<" in attribute:
            return _bytes(f"QvnGetByteArray{self.kind}", *arguments)
        return os.fsdecode(_bytes(f"QvnGetString{self.kind}", *arguments).rstrip(b"\0"))

    @property
    def state(self) -> int:
        """As the library sees it: a DeviceState of printers, the last event's id of HIDs."""
        return _number(f"QvnGetCurrentState{self.kind}", self.client, self.handle)

    def _exchange(self, name: str, request: bytes) -> bytes:
        # No packet, and no command, is longer.
        buffer, length = ctypes.create_string_buffer(0x10010), ctypes.c_uint32()
        _call(name, self.client, self.handle, request, len(request), buffer, len(buffer), ctypes.byref(length))
        return buffer.raw[:length.value]


# ---- Printers ----


class DeviceState(enum.IntEnum):
    PRINTING = 1
    ERROR = 2
    IDLE = 3


class Printer(_Device):
    """A printer: prints, exchanges NPA packets, hears alerts."""

    kind = "Printer"
    ALL_ALERTS = 0x3FFFFFF

    def __setitem__(self, attribute: str, value: Union[int, str, bytes]) -> None:
        """Sets a writeable attribute, which the device's transport has to accept."""
        arguments = self.client, self.handle, _encoded(attribute)
        if isinstance(value, int):
            _call("QvnSetLongPrinter", *arguments, value)
        elif isinstance(value, str):
            _call("QvnSetStringPrinter", *arguments, os.fsencode(value), len(os.fsencode(value)))
        else:
            _call("QvnSetByteArrayPrinter", *arguments, value, len(value))

    def job(self, title: str, user: str = "", patience: float = 60) -> PrintJob:
        """Starts a job, which is cancelled when the printer takes nothing for `patience` seconds."""
        return PrintJob(self, title, user, patience)

    def print(self, data: bytes, title: str, user: str = "", patience: float = 60) -> None:
        """Prints the data as one job, and returns when that has ended, as far as the printer tells."""
        with self.job(title, user, patience) as job:
            job.write(data)

    def exchange(self, packet: bytes) -> bytes:
        """Sends one NPA packet (IEEE 1284.1) and gives the whole reply."""
        return self._exchange("QvnExchangeNpaPrinter", packet)

    def cache(self) -> dict[int, bytes]:
        """The entries of a Cpd printer's status cache by their ids."""
        data, entries, at = _bytes("QvnGetCachePrinter", self.client, self.handle), {}, 7
        while at + 3 <= len(data):
            end = at + 3 + data[at + 2]
            if end <= len(data):
                entries[int.from_bytes(data[at:at + 2], "big")] = data[at + 3:end]
            at = end
        return entries

    def on_alert(self, callback: Callable[[bytes], None], mask: int = ALL_ALERTS) -> Registration:
        """Has the callback called with each alert, a whole NPA packet, on a thread of the library."""
        return Registration(self, "Alerts", _callback(
            "A", lambda _handle, data, length, _client: callback(_lent(data, length))), mask)

    def on_notification(self, callback: Callable[[int, int], None]) -> Registration:
        """Has the callback called with each notification's category and id (QvnNotificationCallback)."""
        return Registration(self, "Notifications", _callback(
            "N", lambda _handle, category, number, _data, _length, _client: callback(category, number)), 1)


class PrintJob:
    """A job of an open printer. The end of a with statement ends it; after an exception it is cancelled.

    The data of a Cpd printer has to end with the end-of-job marker: the job sees to it.
    """

    END_OF_JOB = b"\x1b\x2a\x82\0\0\0\0\xac"
    _BLOCK = 0x40000

    def __init__(self, printer: Printer, title: str, user: str, patience: float) -> None:
        self._printer, self._patience = printer, patience
        self._marker = self.END_OF_JOB if printer[Attribute.DEVICE] == "CpdPrinter" else b""
        self._kept = b""  # the last bytes: a marker must be in one write
        self._ended = self._asked = False
        self.cancelled = False  # by whom- or whatever, as far as the library knows
        # A client of its own, so that the printer's registrations stay its user's.
        self._heard = Printer(printer.library, printer.handle).on_notification(self._hear)
        try:
            _call("QvnStartJobPrinter", printer.client, printer.handle, 0, _encoded(printer[Attribute.PORTNAME]),
                  _encoded(socket.gethostname()), _encoded(title), _encoded(user))
        except QvnError:
            self._heard.close()
            raise

    def __enter__(self) -> PrintJob:
        return self

    def __exit__(self, kind: Any, *_: Any) -> None:
        if kind is not None:
            self.cancel()
        self.end()

    def write(self, data: bytes) -> None:
        """Gives the job its next data, all of it."""
        data = self._kept + data
        sent = max(len(data) - len(self._marker), 0)
        self._kept = data[sent:]
        self._send(memoryview(data)[:sent])

    def cancel(self) -> None:
        """Asks for the job to be cancelled, from any thread; it still has to be ended."""
        self._asked = True
        _call("QvnCancelJobPrinter", self._printer.client, self._printer.handle)

    def end(self) -> None:
        """Ends the job. QvnError CANCELLED when that was cancelled, but not by cancel()."""
        if self._ended:
            return
        self._ended = True
        over = threading.Event()
        watch = threading.Thread(target=self._watch, args=(over,), daemon=True)
        watch.start()
        try:
            self._finish()
        finally:
            over.set()
            watch.join()
            self._heard.close()
        if self.cancelled and not self._asked:
            raise QvnError(Result.CANCELLED, "the print job")

    def _finish(self) -> None:
        try:
            if not self._asked:
                rest = self._kept if self._kept.endswith(self._marker) else self._kept + self._marker
                self._send(memoryview(rest))
        except QvnError:
            self.cancel()
            c.QvnEndJobPrinter(self._printer.client, self._printer.handle)
            raise
        _call("QvnEndJobPrinter", self._printer.client, self._printer.handle)

    def _send(self, data: memoryview) -> None:
        last = time.monotonic()
        while data:
            block, taken = bytes(data[:self._BLOCK]), ctypes.c_uint32()
            result = c.QvnWritePrinter(self._printer.client, self._printer.handle, block, len(block),
                                       ctypes.byref(taken))
            data = data[taken.value:]
            if taken.value:
                last = time.monotonic()
            if result != Result.SUCCESS:
                if result != Result.INSUFFICIENT_BUFFER or time.monotonic() - last > self._patience:
                    raise QvnError(result, "QvnWritePrinter")
                time.sleep(0.05)

    def _hear(self, category: int, number: int) -> None:
        if (category, number) == (1, 7):
            self.cancelled = True

    def _watch(self, over: threading.Event) -> None:
        """Cancels a job whose end waits for a printer that takes nothing any more."""
        since = time.monotonic()
        while not over.wait(0.1):
            if self._printer.state != DeviceState.ERROR:
                since = time.monotonic()
            elif time.monotonic() - since > self._patience:
                c.QvnCancelJobPrinter(self._printer.client, self._printer.handle)
                return


# ---- Scanners ----


class Page(NamedTuple):
    """A scanned page: lines from the top, without anything between.

    bw: 8 dots a byte, the first in the highest bit, 1 is black, each line filled up to a byte; gray: a byte a dot;
    color: red, green and blue.
    """

    width: int
    height: int
    mode: str
    data: bytes


_Heard = queue.SimpleQueue  # of an event and its data
_Area = tuple[int, int, int, int]


class Scanner(_Device):
    """A scanner: scans pages, exchanges ESC commands (Cpd), runs jobs with parameters (Bpd)."""

    kind = "Scanner"
    DATA, ALERT, DETAIL = 0x1000, 0x2000, 0x4000
    MODES = {"bw": 1, "gray": 8, "color": 24}
    WHOLE = (0, 0, 10200, 14040)

    def scan(self, dpi: int = 300, mode: str = "gray", area: _Area = WHOLE, patience: float = 60) -> Page:
        """Scans the page on the glass. `area` is left, top, width and height in 1/1200 inch. A page that does not
        come whole is a ScanError, and so are `patience` seconds without any of it; a Bpd scanner is then closed, which
        ends the job, until the next page or open()."""
        pages = list(self._pages(dpi, mode, area, patience, feeder=False))
        if not pages:
            raise ScanError("the scanner sent no page")
        return pages[0]

    def feed(self, dpi: int = 300, mode: str = "gray", area: _Area = WHOLE, patience: float = 60) -> Iterator[Page]:
        """The pages in the feeder, one after another to the last."""
        return self._pages(dpi, mode, area, patience, feeder=True)

    def exchange(self, command: bytes) -> bytes:
        """Sends one ESC command to a Cpd scanner and gives the reply."""
        return self._exchange("QvnExchangeDataScanner", command)

    def set_parameter(self, key: str, value: Union[int, str]) -> None:
        """Sets a parameter of this object's next job, for example "Scan.Param.Resolution"."""
        _call("QvnSetJobStringScanner", self.client, self.handle, _encoded(key), _encoded(str(value)))

    def on_data(self, callback: Callable[[int, bytes], None], mask: int = DATA | ALERT | DETAIL) -> Registration:
        """Has the callback called with each event and its data (QvnScanDataCallback)."""
        return Registration(self, "AsyncData", _callback(
            "S", lambda _client, _job, _handle, event, data, length: callback(event, _lent(data, length))), mask)

    def start_job(self) -> None:
        _call("QvnStartJobScanner", self.client, self.handle, None)

    def cancel_job(self) -> None:
        _call("QvnCancelJobScanner", self.client, self.handle)

    def end_job(self) -> None:
        _call("QvnEndJobScanner", self.client, self.handle)

    def _pages(self, dpi: int, mode: str, area: _Area, patience: float, feeder: bool) -> Iterator[Page]:
        self.open()
        width, height = area[2] * dpi // 1200, area[3] * dpi // 1200
        size = (width * self.MODES[mode] + 7) // 8 * height
        heard: _Heard[tuple[int, bytes]] = _Heard()
        run = self._esc_pages if self[Attribute.DEVICE] == "CpdScanner" else self._job_pages
        with self.on_data(lambda event, data: heard.put((event, data))):
            for data in run(dpi, mode, area, patience, feeder, heard):
                if len(data) != size:
                    raise ScanError(f"the page has {len(data)} bytes, not {size}")
                yield Page(width, height, mode, data)

    @staticmethod
    def _next(heard: _Heard[tuple[int, bytes]], patience: float) -> tuple[int, bytes]:
        try:
            return heard.get(timeout=patience)
        except queue.Empty:
            raise ScanError("the scanner sends nothing") from None

    def _esc_pages(self, dpi: int, mode: str, area: _Area, patience: float, feeder: bool,
                   heard: _Heard[tuple[int, bytes]]) -> Iterator[bytes]:
        def numbers(first: int, second: int) -> bytes:
            return first.to_bytes(2, "little") + second.to_bytes(2, "little")

        left, top, width, height = area
        source = b"source=feeder\n" if feeder else b"source=flatbed\n"
        color = bytes([list(self.MODES).index(mode)])
        # The position last: with the old size it might be off the glass.
        for command in (b"DPS\0\0" + len(source).to_bytes(2, "little") + source, b"SD" + numbers(dpi, dpi),
                        b"SC" + color, b"SM" + numbers(0, 0), b"SZ" + numbers(width, height),
                        b"SM" + numbers(left, top)):
            self._require_good(self.exchange(b"\x1b" + command.ljust(7, b"\0")))
        while True:
            status, data = self._esc_page(heard, patience)
            if feeder and status[3] == 5:
                return
            self._require_good(status)
            yield data
            if not feeder:
                return

    def _esc_page(self, heard: _Heard[tuple[int, bytes]], patience: float) -> tuple[bytes, bytes]:
        """One page, and the status that ends it; each is a job."""
        data = bytearray()
        self.start_job()
        try:
            while True:
                piece = self._next(heard, patience)[1]
                if piece[1:3] == b"SS":
                    return piece, bytes(data)
                if piece[1:3] == b"sd":
                    data += piece[8:8 + int.from_bytes(piece[3:5], "little")]
        except BaseException:
            self.cancel_job()
            raise
        finally:
            self.end_job()

    @staticmethod
    def _require_good(status: bytes) -> None:
        if status[:3] != b"\x1bSS":
            raise ScanError(f"the scanner answers {status.hex(' ')}")
        words = {1: "it is busy", 2: "it does not have the setting", 3: "the page was aborted",
                 5: "there is no sheet", 11: "the connection was lost"}
        if status[3] != 0:
            raise ScanError(words.get(status[3], f"status {status[3]}"))

    def _job_pages(self, dpi: int, mode: str, area: _Area, patience: float, feeder: bool,
                   heard: _Heard[tuple[int, bytes]]) -> Iterator[bytes]:
        left, top, width, height = area
        for key, value in {"Param.Resolution": dpi, "Param.BitDepth": self.MODES[mode], "Param.Source": int(feeder),
                           "Doc.Window.TopLeft.X": left, "Doc.Window.TopLeft.Y": top,
                           "Doc.Window.BottomRight.X": left + width, "Doc.Window.BottomRight.Y": top + height,
                           "Doc.Compression": 0, "Doc.FileFormat": 0}.items():
            self.set_parameter(f"Scan.{key}", value)
        self.set_parameter("Track", 1)  # tells of a lost connection at once
        self.start_job()
        page = bytearray()
        try:
            while True:
                event, data = self._next(heard, patience)
                if event == self.DATA:
                    page += data
                elif data == b"Page.Start":
                    page = bytearray()
                elif data == b"Page.End":
                    yield bytes(page)
                elif data == b"Job.End" or data == b"No Original" and feeder:
                    return
                elif data in (b"Scanner.CommError", b"No Original", b"Cancelled", b"Job.DataTimeout", b"Scan.Error",
                              b"Read Error=64"):
                    raise ScanError(data.decode())
        except ScanError:
            # It may not answer a cancel. With its connection the job ends on the scanner too.
            self.close()
            raise
        finally:
            if self._open:
                self.end_job()


# ---- HIDs ----


class Hid(_Device):
    """A HID: hears reports and events."""

    kind = "Hid"

    def check(self) -> None:
        """QvnError when the open device is not there. One that was lost and is back is heard again from now on."""
        _call("QvnOpenHid", self.client, self.handle)
        _call("QvnCloseHid", self.client, self.handle)

    def on_report(self, callback: Callable[[bytes], None]) -> Registration:
        """Has the callback called with each report; the HID has to be open."""
        return Registration(self, "Reports", _callback(
            "R", lambda _client, _handle, data, length: callback(_lent(data, length))))

    def on_event(self, callback: Callable[[int], None]) -> Registration:
        """Has the callback called with the id of each event that is another than the one before."""
        return Registration(self, "Notifications", _callback(
            "N", lambda _handle, _category, number, _data, _length, _client: callback(number)))
