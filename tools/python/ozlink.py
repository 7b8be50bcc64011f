"""A client for compile servers and link programs. Needs nothing but Python's standard library.

    import ozlink

    with ozlink.connect(1742) as server:             # or ozlink.connect_file("tank.m")
        print(server.OpenFileInternal("tank", "C++", False))
        print(server.GenerateFunctionInternal("Hold[Tank`flow]", 0))
        print(server.CloseFileInternal())

    with ozlink.run(["./tankprogram"]) as program:   # a program of compiled functions
        print(program.flow(1.5, [1, 2, 3]))

The functions that a program announces are methods of the link, with the arguments in the order of their patterns.
Integers, floats, strings, lists, Symbols and Functions go to and fro; True and False are the symbols of these names.
The answer $Failed and a lost link are exceptions. docs/link.md tells the protocol.
"""

import os
import queue
import re
import secrets
import socket
import stat
import struct
import subprocess
import threading

MAGIC = b"OZLK\r\n\x1a\0"
HELLO = MAGIC + struct.pack("<HHI", 1, 1, 0)
DATA, MESSAGE, CREDIT, PING, PONG, BYE = range(1, 7)
SYMBOL, INTEGER, BIG_INTEGER, REAL, FUNCTION, END, STRING = 1, 2, 3, 4, 5, 6, 34
START_CREDIT = 262144
PIECE = 16384
CHUNK = 65536
MESSAGES = {"terminate": 1, "interrupt": 2, "abort": 3}
INT64 = range(-(2**63), 2**63)


class LinkError(Exception):
    """The link could not be made, or has ended."""


class CallFailed(Exception):
    """The program answered $Failed or was aborted."""


class Symbol(str):
    """A symbol, where a plain str is a string."""

    def __repr__(self):
        return "Symbol(%s)" % str.__repr__(self)


class Function:
    """head[arg, ...]; a List is a Python list instead."""

    def __init__(self, head, *args):
        self.head = head if not isinstance(head, str) else Symbol(head)
        self.args = list(args)

    def __eq__(self, other):
        return isinstance(other, Function) and (self.head, self.args) == (other.head, other.args)

    def __repr__(self):
        return "%s[%s]" % (self.head, ", ".join(map(repr, self.args)))


def key_folder(make=False):
    runtime = os.environ.get("XDG_RUNTIME_DIR", "")
    folder = runtime + "/ozlink" if runtime.startswith("/") else "/tmp/ozlink-%d" % os.geteuid()
    if make:
        try:
            os.mkdir(folder, 0o700)
        except FileExistsError:
            pass
    try:
        state = os.lstat(folder)
    except OSError as error:
        raise LinkError("no link of this user listens: %s" % error) from error
    if not stat.S_ISDIR(state.st_mode) or state.st_uid != os.geteuid() or state.st_mode & 0o77:
        raise LinkError("%s is not private" % folder)
    return folder


def encode(value, out):
    """Appends the tokens of a value to a bytearray."""
    todo = [value]
    while todo:
        v = todo.pop()
        if v is True or v is False:
            v = Symbol(v)
        if isinstance(v, Symbol):
            text = v.encode("ascii")
            out += struct.pack("<BH", SYMBOL, len(text)) + text
        elif isinstance(v, str):
            encode_string(v.encode("utf-8", "surrogateescape"), out)
        elif isinstance(v, int):
            if v in INT64:
                out += struct.pack("<Bq", INTEGER, v)
            else:
                digits = str(v).encode()
                out += struct.pack("<BI", BIG_INTEGER, len(digits)) + digits
        elif isinstance(v, float):
            out += struct.pack("<Bd", REAL, v)
        elif isinstance(v, (list, tuple)):
            out += struct.pack("<BI", FUNCTION, len(v))
            todo.extend(reversed(v))
            todo.append(Symbol("List"))
        elif isinstance(v, Function):
            out += struct.pack("<BI", FUNCTION, len(v.args))
            todo.extend(reversed(v.args))
            todo.append(v.head)
        else:
            raise TypeError("a link carries no %s" % type(v).__name__)


def encode_string(data, out):
    out.append(STRING)
    for i in range(0, max(len(data), 1), CHUNK):
        piece = data[i:i + CHUNK]
        more = 0x80000000 if i + CHUNK < len(data) else 0
        out += struct.pack("<I", len(piece) | more) + piece


class Link:
    """A connected link. Made by connect, connect_file and run."""

    def __init__(self, sock, timeout, process=None):
        self._socket = sock
        self._timeout = timeout
        self._process = process
        self._input = bytearray()
        self._position = 0
        self._arrived = queue.Queue()
        self._lock = threading.Lock()
        self._more_credit = threading.Condition(self._lock)
        self._pongs = threading.Semaphore(0)
        self._credit = START_CREDIT
        self._taken = 0
        self._end = None
        self.status = None  # of a program that run() started, after close()
        self.definitions = {}
        sock.settimeout(None)
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    # ---- frames

    def _send_frame(self, kind, payload=b""):
        """Sends a frame; under the lock."""
        try:
            self._socket.sendall(struct.pack("<IB3x", len(payload), kind) + payload)
        except OSError as error:
            raise LinkError("the link is lost: %s" % error) from error

    def _receive_whole(self, n):
        data = bytearray()
        while len(data) < n:
            piece = self._socket.recv(min(n - len(data), 1 << 18))
            if not piece:
                raise LinkError("the link is lost")
            data += piece
        return data

    def _read(self):
        """The reader thread: queues data, answers pings."""
        end = "the link is lost"
        try:
            while True:
                length, kind = struct.unpack("<IB3x", self._receive_whole(8))
                payload = self._receive_whole(length)
                if kind == BYE:
                    end = "the program has closed the link"
                    break
                self._take_frame(kind, payload)
        except (LinkError, OSError):
            pass
        with self._lock:
            self._end = end
            self._more_credit.notify_all()
        self._arrived.put(None)
        try:
            self._socket.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass

    def _take_frame(self, kind, payload):
        if kind == DATA:
            self._arrived.put(payload)
        elif kind == PONG:
            self._pongs.release()
        elif kind in (CREDIT, PING):
            with self._lock:
                if kind == PING:
                    self._send_frame(PONG)
                else:
                    self._credit += struct.unpack("<I", payload)[0]
                    self._more_credit.notify_all()

    # ---- bytes

    def send(self, data):
        """Sends token bytes."""
        view = memoryview(data)
        while view:
            with self._lock:
                if not self._more_credit.wait_for(lambda: self._credit > 0 or self._end, self._timeout):
                    raise LinkError("the program takes nothing")
                if self._end:
                    raise LinkError(self._end)
                n = min(len(view), PIECE, self._credit)
                self._credit -= n
                self._send_frame(DATA, bytes(view[:n]))
            view = view[n:]

    def _need(self, n):
        while len(self._input) - self._position < n:
            try:
                data = self._arrived.get(timeout=self._timeout)
            except queue.Empty:
                raise LinkError("no answer for %g seconds" % self._timeout) from None
            if data is None:
                self._arrived.put(None)  # for the next one who asks
                raise LinkError(self._end)
            del self._input[:self._position]
            self._position = 0
            self._input += data
            self._grant(len(data))

    def _grant(self, n):
        self._taken += n
        if self._taken < START_CREDIT // 4:
            return
        with self._lock:
            try:
                self._send_frame(CREDIT, struct.pack("<I", self._taken))
            except LinkError:
                pass  # what has arrived is still there to read
        self._taken = 0

    def _bytes(self, n):
        self._need(n)
        data = bytes(self._input[self._position:self._position + n])
        self._position += n
        return data

    def _number(self, form):
        return struct.unpack(form, self._bytes(struct.calcsize(form)))[0]

    # ---- expressions

    def put(self, value):
        """Sends an expression and the end of its packet."""
        out = bytearray()
        encode(value, out)
        out.append(END)
        self.send(out)

    def _atom(self, kind):
        if kind == INTEGER:
            return self._number("<q")
        if kind == REAL:
            return self._number("<d")
        if kind == BIG_INTEGER:
            return int(self._bytes(self._number("<I")))
        if kind == SYMBOL:
            text = self._bytes(self._number("<H")).decode("ascii")
            return {"True": True, "False": False}.get(text, Symbol(text))
        if kind != STRING:
            raise LinkError("the program sent what is no token")
        data = bytearray()
        while True:
            head = self._number("<I")
            data += self._bytes(head & 0x7FFFFFFF)
            if not head >> 31:
                return data.decode("utf-8", "surrogateescape")

    def get(self):
        """Reads one expression, without the end of its packet."""
        open_functions = []  # [count of parts, parts...] of each
        while True:
            kind = self._bytes(1)[0]
            if kind == FUNCTION:
                open_functions.append([self._number("<I") + 1])
                continue
            value = self._atom(kind)
            while open_functions:
                top = open_functions[-1]
                top.append(value)
                if len(top) <= top[0]:
                    break
                open_functions.pop()
                value = top[2:] if top[1] == "List" else Function(top[1], *top[2:])
            if not open_functions:
                return value

    def get_packet(self):
        """Reads one expression and the end of its packet."""
        value = self.get()
        if self._bytes(1)[0] != END:
            raise LinkError("the program sent more than one expression")
        return value

    # ---- calls

    def read_definitions(self):
        """Learns the functions that the program announces."""
        while True:
            value = self.get()
            if value == "End" and isinstance(value, Symbol):
                return
            if isinstance(value, Function) and value.head == "DefineExternal":
                self._define(*value.args)

    def _define(self, pattern, arguments, number):
        name, formals = re.fullmatch(r"\s*([\w$`]+)\[(.*)\]\s*", pattern, re.DOTALL).groups()
        words = re.findall(r"([\w$]+?)_(\w*)", formals)
        names = [w[0] for w in words]
        order = [names.index(a) for a in re.findall(r"[\w$]+", arguments)]
        self.definitions[name] = (number, [w[1] for w in words], order)

    def call_number(self, number, *args):
        """Calls by number, with the arguments in the order of the wire."""
        self.put(Function("CallPacket", number, list(args)))
        return self.get_packet()

    def call(self, name, *args):
        """Calls a function that the program announced."""
        number, types, order = self.definitions[name]
        if len(args) != len(types):
            raise TypeError("%s takes %d arguments" % (name, len(types)))
        args = [convert(a, t) for a, t in zip(args, types)]
        answer = self.call_number(number, *[args[i] for i in order])
        if isinstance(answer, Symbol) and answer == "$Failed":
            raise CallFailed("%s failed" % name)
        if answer == Function("Abort"):
            raise CallFailed("%s was aborted" % name)
        return answer

    def __getattr__(self, name):
        if name.startswith("_") or name not in self.definitions:
            raise AttributeError(name)
        return lambda *args: self.call(name, *args)

    def __dir__(self):
        return [*super().__dir__(), *self.definitions]

    def message(self, name):
        """Sends "terminate", "interrupt" or "abort", past everything that waits."""
        with self._lock:
            self._send_frame(MESSAGE, struct.pack("<II", MESSAGES[name], 0))

    def ping(self):
        """Waits until the program's link has seen everything sent so far, also while a command runs."""
        with self._lock:
            self._send_frame(PING)
        if not self._pongs.acquire(timeout=self._timeout):
            raise LinkError("no sign of life for %g seconds" % self._timeout)

    # ---- the end

    def close(self):
        """Ends the link, and waits for a program that run() started."""
        with self._lock:
            if not self._end:
                try:
                    self._send_frame(BYE, struct.pack("<I", 0))
                    self._socket.shutdown(socket.SHUT_WR)
                except (LinkError, OSError):
                    pass
        self._reader.join(2)
        self._socket.close()
        if self._process and self.status is None:
            self.status = self._process.wait(self._timeout)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()


def convert(value, kind):
    """A value as the declared type of an argument wants it."""
    if kind == "Symbol" and isinstance(value, str):
        return Symbol(value)
    if kind == "Real" and isinstance(value, int) and not isinstance(value, bool):
        return float(value)
    return value


def read_hello(sock):
    hello = receive_exactly(sock, len(HELLO))
    if hello[:8] != MAGIC:
        raise LinkError("that is no link")
    lowest, highest, zero = struct.unpack("<HHI", hello[8:])
    if not lowest <= 1 <= highest or zero:
        raise LinkError("the other side speaks another version")


def receive_exactly(sock, n):
    data = b""
    while len(data) < n:
        piece = sock.recv(n - len(data))
        if not piece:
            raise LinkError("the connection was refused")
        data += piece
    return data


def connect(port, timeout=30):
    """Connects to a server on this machine."""
    try:
        with open("%s/tcp-%d.key" % (key_folder(), port), "rb") as file:
            key = file.read(64)
        sock = socket.create_connection(("127.0.0.1", port), 5)
    except OSError as error:
        raise LinkError("no server on port %d: %s" % (port, error)) from error
    sock.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    try:
        sock.sendall(HELLO)
        read_hello(sock)
        sock.sendall(key[:32])
        if not secrets.compare_digest(receive_exactly(sock, 32), key[32:]):
            raise LinkError("the server could not prove itself")
    except (OSError, LinkError) as error:
        sock.close()
        raise LinkError("the connection was refused: %s" % error) from error
    link = Link(sock, timeout)
    link.read_definitions()
    return link


def connect_file(name, timeout=30):
    """Connects to the server whose connection text stands in a file that "oz -d -o FILE" wrote."""
    with open(name, encoding="utf-8", errors="replace") as file:
        ports = re.findall(r'Install\["(\d+)"', file.read())
    if not ports:
        raise LinkError("%s tells no port" % name)
    return connect(int(ports[-1]), timeout)


def run(command, timeout=30, **options):
    """Starts a link program and connects it to this process; options go to subprocess.Popen."""
    listener = socket.create_server(("127.0.0.1", 0))
    listener.settimeout(timeout)
    port = listener.getsockname()[1]
    key = secrets.token_bytes(64)
    path = "%s/tcp-%d.key" % (key_folder(make=True), port)
    process = None
    try:
        with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_EXCL | os.O_NOFOLLOW, 0o600), "wb") as file:
            file.write(key)
        process = subprocess.Popen([*command, "-linkmode", "connect", "-linkprotocol", "TCP", "-linkname", str(port)],
                                   **options)
        link = Link(accept(listener, key), timeout, process)
    except BaseException:
        if process:
            process.kill()
            process.wait()
        raise
    finally:
        listener.close()
        if os.path.exists(path):
            os.remove(path)
    link.read_definitions()
    return link


def accept(listener, key):
    """The first peer that proves itself."""
    while True:
        try:
            sock, _ = listener.accept()
        except TimeoutError:
            raise LinkError("the program has not connected") from None
        sock.settimeout(5)
        sock.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        try:
            sock.sendall(HELLO)
            read_hello(sock)
            if secrets.compare_digest(receive_exactly(sock, 32), key[:32]):
                sock.sendall(key[32:])
                return sock
        except (OSError, LinkError):
            pass
        sock.close()
