"""The module qvn: its tables are those of the headers, and what it does with devices, simulated ones."""
import contextlib
import hashlib
import json
import os
import pathlib
import queue
import re
import subprocess
import sys
import tempfile
import threading
import unittest

import qvn

SOURCE = pathlib.Path(os.environ["QVN_SOURCE"])
BUILD = pathlib.Path(os.environ["QVN_BUILD"])

LIMIT = 30  # seconds for what takes none


class Interface(unittest.TestCase):
    """What the module repeats of the headers."""

    CODES = {"uint32_t": "u", "uint32_t*": "U", "const char*": "s", "char*": "c", "const uint8_t*": "b",
             "uint8_t*": "B", "void*": "p", "void": "v",
             **{name: code for code, (name, _, _) in qvn._CALLBACKS.items()}}

    @staticmethod
    def header(name):
        return re.sub(r"/\*.*?\*/|\\\n", "", (SOURCE / "include/qvn" / name).read_text(), flags=re.DOTALL)

    def codes(self, arguments):
        types = [re.sub(r"\b\w+$", "", argument).strip() for argument in " ".join(arguments.split()).split(", ")]
        return "" if arguments == "void" else "".join(self.CODES[kind] for kind in types)

    def test_functions_and_callbacks(self):
        header = self.header("qvn.h")
        functions = {name: self.codes(arguments) for name, arguments in
                     re.findall(r"QVN_EXPORT uint32_t (\w+)\((.*?)\);", header, re.DOTALL)}
        self.assertEqual(len(functions), 70)
        self.assertEqual(qvn._FUNCTIONS, functions)
        callbacks = {name: (self.CODES[result], self.codes(arguments)) for result, name, arguments in
                     re.findall(r"typedef (\w+) \(\*(\w+)\)\((.*?)\);", header, re.DOTALL)}
        self.assertEqual({name: (result, arguments) for name, result, arguments in qvn._CALLBACKS.values()}, callbacks)
        for name in functions:
            self.assertTrue(callable(getattr(qvn.c, name)), name)

    def test_codes_and_attributes(self):
        codes = {name: int(code) for name, code in
                 re.findall(r"#define QRN_ERROR_(\w+) (\d+)u", self.header("result_codes.h"))}
        self.assertEqual({result.name: result.value for result in qvn.Result}, codes)
        attributes = {name: qvn._descriptor(*parts) for name, *parts in re.findall(
            r'#define QVN_ATTRIBUTE_(\w+)\s+QVN_ATTRIBUTE\("(.*?)", "(.*?)", "(.*?)"\)', self.header("attributes.h"))}
        self.assertGreater(len(attributes), 70)
        self.assertEqual({attribute.name: attribute.value for attribute in qvn.Attribute}, attributes)


class Simulator:
    """A simulated device; its serial number is its family."""

    def __init__(self, family, directory):
        self.directory = pathlib.Path(directory)
        self.command = [BUILD / "tools/qvn-sim/qvn-sim", "--family", family, "--serial", family, "--events",
                        "--quit-on-eof", "--feeder", "2", "--jobs", self.directory / "jobs",
                        "--scans", self.directory / "scans"]
        self.ready = self.start()
        self.place = f"{self.ready['address']}:{self.ready['discovery']}"

    def start(self, *options):
        self.process = subprocess.Popen([*self.command, *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True)
        return self.line()

    def restart(self):
        """Is gone without a word, and there again on the same ports."""
        self.process.kill()
        self.close()
        self.start(*(f"--{port}-port={self.ready[port]}" for port in ("discovery", "bidi", "print", "scan", "hid")))

    def line(self):
        return json.loads(self.process.stdout.readline())

    def order(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()
        assert self.line() == {"ok": True}, command

    def job(self):
        """The outcome of the next job that ends, and what the device kept of it."""
        record = self.line()["job"]
        kept = self.directory / f"jobs/job-{record['id']}.prn"
        return record["outcome"], kept.read_bytes() if kept.exists() else None

    def page(self, number):
        """The size, depth and SHA-256 of the pixels of a page that it sent."""
        line = subprocess.check_output([sys.executable, SOURCE / "scripts/png_pixels.py",
                                        self.directory / f"scans/page-{number}.png"], text=True)
        return line.rsplit(" ", 1)[0]

    def close(self):
        self.process.stdin.close()
        self.process.wait(LIMIT)
        self.process.stdout.close()


class Devices(unittest.TestCase):
    """What the classes do with a device of each family."""

    SUMMARY = bytes.fromhex("A50003500100")

    @contextlib.contextmanager
    def device(self, family):
        with self.subTest(family), tempfile.TemporaryDirectory() as directory, \
                contextlib.closing(Simulator(family, directory)) as device, qvn.Library() as library:
            library.add_transport("qvn_ipv4.so")
            library.discover("IPv4", device.place)
            yield device, library

    def test_printing(self):
        data = os.urandom(700001)
        marked = data + qvn.PrintJob.END_OF_JOB
        for family, jobs in (("CpdPrinter", [(data, data), (marked, data), (b"", b"")]),
                             ("BpdPrinter", [(data, data), (marked, marked), (b"a", b"a")])):
            with self.device(family) as (device, library), library.printer("IP_" + family) as printer:
                self.assertIn(printer.handle, [stored.handle for stored in library.printers()])
                self.assertEqual(printer[qvn.Attribute.HANDLE], printer.handle)
                for sent, kept in jobs:
                    with printer.job("title") as job:
                        for at in range(0, len(sent), 99999):
                            job.write(sent[at:at + 99999])
                    self.assertEqual(device.job(), ("complete", kept))

    def test_a_job_is_cancelled_by_an_exception(self):
        with self.device("CpdPrinter") as (device, library), library.printer("IP_CpdPrinter") as printer:
            with self.assertRaises(ZeroDivisionError), printer.job("title") as job:
                job.write(bytes([1]) * 700000)
                job.write(bytes([1 // 0]))
            self.assertEqual(device.job(), ("cancelled", None))
            self.assertTrue(job.cancelled)
            device.order("fault reject=start-job:1")
            with self.assertRaises(qvn.QvnError) as rejected:
                printer.print(b"dropped", "title")
            self.assertEqual(rejected.exception.code, qvn.Result.CANCELLED)

    def test_attributes_exchanges_and_errors(self):
        with self.device("CpdPrinter") as (_, library), library.printer("IP_CpdPrinter") as printer:
            printer[qvn.Attribute.PORTNAME] = "Büro"
            self.assertEqual(printer[qvn.Attribute.PORTNAME], "Büro")
            printer[qvn.Attribute.PORTNAME] = "IP_CpdPrinter"
            self.assertEqual(printer.exchange(self.SUMMARY)[:6].hex(), "a5001c200100")
            for name, failing in (
                    ("QRN_ERROR_UNKNOWN_PORT", lambda: library.printer("nowhere")),
                    ("QRN_ERROR_INVALID_HANDLE", lambda: qvn.Printer(library, 1).open()),
                    ("QRN_ERROR_ACCESS_DENIED", lambda: printer.exchange(b"no packet")),
                    ("QRN_ERROR_INVALID_PARAMETER", lambda: printer.__setitem__(qvn.Attribute.HANDLE, 7)),
                    ("QRN_ERROR_NOT_FOUND", lambda: printer[qvn.Attribute.USB_NAME])):
                with self.assertRaises(qvn.QvnError) as failed:
                    failing()
                self.assertEqual(failed.exception.name, name)

    def test_alerts_and_what_a_callback_raises(self):
        raised = queue.SimpleQueue()
        hook, threading.excepthook = threading.excepthook, lambda arguments: raised.put(arguments.exc_value)
        self.addCleanup(setattr, threading, "excepthook", hook)
        with self.device("CpdPrinter") as (device, library), library.printer("IP_CpdPrinter") as printer, \
                library.printer("IP_CpdPrinter") as other:
            heard = queue.SimpleQueue()
            printer.on_alert(lambda alert: {}["missing"])
            other.on_alert(heard.put)
            for status in (b"\x00\x01", b"\x00\x00"):
                device.order(f"status 00 {status.hex()}")
                self.assertEqual(heard.get(timeout=LIMIT)[0], 0xA5)
                self.assertIsInstance(raised.get(timeout=LIMIT), KeyError)
                self.assertEqual(printer.cache()[18], status)

    def test_scanning(self):
        for family in ("CpdPrinter", "BpdPrinter"):
            with self.device(family) as (device, library):
                self.assertIn("CpdScanner" if family == "CpdPrinter" else "BpdScanner",
                              [scanner[qvn.Attribute.DEVICE] for scanner in library.scanners()])
                with library.scanner("IP_" + family) as scanner:
                    pages = [scanner.scan(75, "color", (1200, 2400, 3600, 1200)), *scanner.feed(100, "gray")]
                depth = {"color": 24, "gray": 8}
                self.assertEqual(
                    [f"{page.width}x{page.height} {depth[page.mode]} bits {hashlib.sha256(page.data).hexdigest()}"
                     for page in pages],
                    [device.page(number) for number in (1, 2, 3)])

    def test_buttons_and_events(self):
        with self.device("CpdPrinter") as (device, library):
            hid = library.hid("IP_CpdPrinter")
            reports, events = queue.SimpleQueue(), queue.SimpleQueue()
            with hid, hid.on_report(reports.put), hid.on_event(events.put):
                self.assertEqual(self.report(device, 5, reports), bytes([1, 1, 5, 0, 0, 0, 0, 0]))
                device.order("event 7")
                self.assertEqual(events.get(timeout=LIMIT), 7)
                # The state is set when the clients have been told: before the next report.
                self.report(device, 6, reports)
                self.assertEqual(hid.state, 7)

    def test_a_device_that_was_lost_is_heard_again(self):
        with self.device("CpdPrinter") as (device, library), library.printer("IP_CpdPrinter") as printer, \
                library.hid("IP_CpdPrinter") as hid:
            alerts, reports = queue.SimpleQueue(), queue.SimpleQueue()
            printer.on_alert(alerts.put)
            hid.on_report(reports.put)
            device.restart()
            self.eventually(lambda: printer.exchange(self.SUMMARY))
            device.order("alert A500 0680 F0E1 0102 03")
            self.assertEqual(alerts.get(timeout=LIMIT).hex(), "a5000680f0e1010203")
            self.eventually(hid.check)
            self.report(device, 9, reports)

    def report(self, device, button, reports):
        """The report of a button that is pressed until it is heard: the device may accept a connection late."""
        def press():
            device.order(f"button {button}")
            return reports.get(timeout=0.2)
        return self.eventually(press)

    def eventually(self, function):
        for _ in range(100):
            with contextlib.suppress(qvn.QvnError, queue.Empty):
                return function()
        return function()


def setUpModule():
    # The registry stays open as long as the process lives.
    home = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(home.cleanup)
    os.environ["QVN_HOME"] = home.name
    for setting in ("TeojInterval", "9200UnicastDiscoveryTimeout"):
        subprocess.run([BUILD / "tools/qvn/qvn", "settings", "set", setting, "100"], check=True,
                       stdout=subprocess.DEVNULL)


if __name__ == "__main__":
    unittest.main()
