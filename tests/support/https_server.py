"""An HTTPS server that behaves, and misbehaves, as a test asks for.

usage: https_server.py FOLDER

Makes certificates in FOLDER (see certificates.py), listens on one port a kind of line
(LINES), prints "NAME PORT" for each and then "ready". Then it reads commands, one a line,
and answers each with one line:

    set BODY        what /body answers from now on, hexadecimal        -> ok
    status NUMBER   with which status                                  -> ok
    count NAME      -> "CONNECTIONS HANDSHAKES REQUESTS" of a line
    last            the last request that was read, as JSON
    restart NAME    closes a line with all its connections, opens it again on its port
    stop NAME       closes a line for good
    start NAME      opens a line that is closed again on its port
    inject NAME     says something unasked on each connection of a line -> ok
    certificate NAME CERTIFICATE    a line has this certificate from now on

It ends when its standard input does. What a path does stands in PATHS.
"""

import gzip
import json
import os
import socket
import ssl
import struct
import sys
import threading

import certificates

# Eight octets for each one that the tests' clients take. Made once: it takes a while.
BOMB = gzip.compress(bytes(1 << 23))


class Line:
    """A port, its certificate, and how it treats those who connect."""

    def __init__(self, folder, name, certificate="server", client_ca=None, newest=None,
                 handshake=True, always=None):
        self.always = always  # the path that every request counts as
        self.folder, self.name, self.certificate = folder, name, certificate
        self.client_ca, self.newest, self.handshake = client_ca, newest, handshake
        self.lock = threading.Lock()
        self.connections, self.handshakes, self.requests = 0, 0, 0
        self.open = set()
        self.port = 0
        self.listen()

    def context(self):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        if self.newest:
            context.set_ciphers("ALL:@SECLEVEL=0")
            context.minimum_version = ssl.TLSVersion.TLSv1
            context.maximum_version = self.newest
        context.load_cert_chain(os.path.join(self.folder, self.certificate + ".crt"),
                                os.path.join(self.folder, self.certificate + ".key"))
        if self.client_ca:
            context.verify_mode = ssl.CERT_REQUIRED
            context.load_verify_locations(os.path.join(self.folder, self.client_ca + ".crt"))
        return context

    def listen(self):
        self.tls = self.context()
        self.listener = socket.socket()
        self.listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.listener.bind(("127.0.0.1", self.port))
        self.listener.listen(64)
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.accept, args=(self.listener,), daemon=True).start()

    def accept(self, listener):
        while True:
            try:
                connection, _ = listener.accept()
            except OSError:
                return
            with self.lock:
                self.connections += 1
                self.open.add(connection)
            threading.Thread(target=self.serve, args=(connection,), daemon=True).start()

    def serve(self, plain):
        if self.handshake is None:
            plain.close()
            return
        if not self.handshake:
            return  # `open` keeps the connection; nothing is ever read from it
        plain.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        connection = self.tls.wrap_socket(plain, server_side=True, suppress_ragged_eofs=False,
                                          do_handshake_on_connect=False)
        with self.lock:
            self.open.discard(plain)
            self.open.add(connection)
        try:
            connection.do_handshake()
        except OSError:
            drain(socket.socket(fileno=connection.detach()))
            return
        with self.lock:
            self.handshakes += 1
        try:
            serve(self, connection)
        except (OSError, ValueError):
            pass
        with self.lock:
            self.open.discard(connection)
        connection.close()

    def close(self):
        # Waking the accepting thread; a bare close() would leave it waiting.
        self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()
        with self.lock:
            connections, self.open = self.open, set()
        for connection in connections:
            try:
                connection.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass


def drain(connection):
    """Lets the other side read what it was told last, before it sees a reset."""
    try:
        connection.shutdown(socket.SHUT_WR)
        while connection.recv(4096):
            pass
    except OSError:
        pass
    connection.close()


class Request:
    def __init__(self, stream):
        self.first = stream.readline(65536).decode("latin-1").rstrip("\r\n")
        if not self.first:
            raise OSError("end")
        self.headers = []
        while True:
            line = stream.readline(65536).decode("latin-1").rstrip("\r\n")
            if not line:
                break
            name, _, value = line.partition(":")
            self.headers.append([name, value.strip()])
        self.method, self.target, _ = self.first.split(" ")
        self.path = self.target.partition("?")[0]
        self.body = ""
        if not self.path.startswith("/unread"):
            length = next((int(v) for n, v in self.headers if n.lower() == "content-length"), 0)
            self.body = stream.read(length).decode("latin-1")

    def spelled(self):
        return json.dumps({"method": self.method, "target": self.target,
                           "headers": self.headers, "body": self.body})


class State:
    body, status, last = b"", 200, "null"


def reset(connection):
    """Ends a connection with a reset and without a good-bye."""
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    os.close(connection.detach())


def answer(connection, body=b"", status=200, headers=()):
    head = [f"HTTP/1.1 {status} x", f"Content-Length: {len(body)}", *headers]
    connection.sendall("\r\n".join(head + ["", ""]).encode() + body)
    return True


def endless(connection, head, block):
    connection.sendall(head)
    while True:
        connection.sendall(block)


def wait_for_end(connection):
    while connection.recv(4096):
        pass


def drip(connection):
    connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n")
    connection.settimeout(0.2)
    while True:
        connection.sendall(b"x")
        try:
            if not connection.recv(1):
                return
        except socket.timeout:
            pass


def zipped(connection, body):
    answer(connection, body, headers=["Content-Encoding: gzip"])
    return True


def raw(octets):
    """Sends these and closes, properly for TLS."""
    def act(connection):
        connection.sendall(octets)
        drain(connection.unwrap())
    return act


def torn(octets):
    """Sends these and closes without TLS's good-bye."""
    def act(connection):
        connection.sendall(octets)
        plain = socket.socket(fileno=connection.detach())
        drain(plain)
    return act


OK = b"HTTP/1.1 200 OK\r\n"
PATHS = {
    "/redirect": lambda c: answer(c, b"", 302, ["Location: https://elsewhere.example/"]),
    "/redirect-http": lambda c: answer(c, b"", 302, ["Location: http://127.0.0.1/"]),
    "/redirect-file": lambda c: answer(c, b"", 302, ["Location: file:///etc/passwd"]),
    "/hang": wait_for_end,
    "/drip": drip,
    "/close": raw(b""),
    "/tear": torn(b""),
    "/reset": reset,
    "/unread/reset": reset,
    "/cut": raw(OK + b"Content-Length: 100\r\n\r\n0123456789"),
    "/cut-chunk": raw(OK + b"Transfer-Encoding: chunked\r\n\r\n64\r\n0123456789"),
    "/cut-header": torn(OK + b"Content-Le"),
    "/identity": raw(OK + b"Transfer-Encoding: identity\r\n\r\nall of it?"),
    "/excess": lambda c: c.sendall(OK + b"Content-Length: 2\r\n\r\n{}" + OK +
                                   b"Content-Length: 9\r\n\r\nsmuggled!") is None,
    "/to-the-end": raw(OK + b"\r\nall of it"),
    "/to-the-end-torn": torn(OK + b"\r\nall of it?"),
    "/endless": lambda c: endless(c, OK + b"Transfer-Encoding: chunked\r\n\r\n",
                                  b"10000\r\n" + b"x" * 65536 + b"\r\n"),
    "/endless-header": lambda c: endless(c, OK, (b"X-Filler: " + b"x" * 1000 + b"\r\n") * 16),
    "/endless-interim": lambda c: endless(c, b"", b"HTTP/1.1 102 Wait\r\n\r\n" * 500),
    "/long": raw(OK + b"Content-Length: 1000000000\r\n\r\nx"),
    "/negative": raw(OK + b"Content-Length: -5\r\n\r\nx"),
    "/no-http": raw(b"SSH-2.0-OpenSSH_9.2\r\n\r\n"),
    "/bad-chunk": raw(OK + b"Transfer-Encoding: chunked\r\n\r\nzz\r\nx\r\n0\r\n\r\n"),
    "/gzip": lambda c: zipped(c, gzip.compress(b"unpacked")),
    "/bomb": lambda c: zipped(c, BOMB),
    "/bad-gzip": lambda c: zipped(c, b"\x1f\x8b\x08\x00garbage that is no deflate stream"),
    "/unknown-coding": lambda c: answer(c, b"?", headers=["Content-Encoding: sdch"]),
    "/no-content": lambda c: c.sendall(b"HTTP/1.1 204 x\r\n\r\n") is None,
}


def serve(line, connection):
    stream = connection.makefile("rb")
    while True:
        request = Request(stream)
        with line.lock:
            line.requests += 1
        State.last = request.spelled()
        request.path = line.always or request.path
        if request.path == "/last":  # the server dies on this request
            line.close()
            return
        if request.path in PATHS:
            if PATHS[request.path](connection) is not True:
                return
        elif request.path == "/echo":
            answer(connection, State.last.encode())
        elif request.path.startswith("/size/"):
            answer(connection, b"x" * int(request.path[6:]))
        elif request.path.startswith("/chunks/"):
            size = int(request.path[8:])
            connection.sendall(OK + b"Transfer-Encoding: chunked\r\n\r\n%x\r\n" % size +
                               b"x" * size + b"\r\n0\r\n\r\n")
        else:
            answer(connection, State.body, State.status)
        if ["connection", "close"] in [[n.lower(), v] for n, v in request.headers]:
            connection.unwrap()
            return


def command(lines, words):
    if words[0] == "set":
        State.body = bytes.fromhex(words[1] if len(words) > 1 else "")
    elif words[0] == "status":
        State.status = int(words[1])
    elif words[0] == "count":
        line = lines[words[1]]
        with line.lock:
            return f"{line.connections} {line.handshakes} {line.requests}"
    elif words[0] == "last":
        return State.last
    elif words[0] == "restart":
        lines[words[1]].close()
        lines[words[1]].listen()
    elif words[0] == "stop":
        lines[words[1]].close()
    elif words[0] == "start":
        lines[words[1]].listen()
    elif words[0] == "inject":
        with lines[words[1]].lock:
            for connection in lines[words[1]].open:
                answer(connection, b"unasked")
    elif words[0] == "certificate":
        lines[words[1]].certificate = words[2]
        lines[words[1]].tls = lines[words[1]].context()
    else:
        raise SystemExit("no such command: " + words[0])
    return "ok"


def main(folder):
    certificates.make(folder)
    lines = [
        Line(folder, "good"),
        Line(folder, "expired", "expired"),
        Line(folder, "early", "early"),
        Line(folder, "wrong_host", "wrong_host"),
        Line(folder, "other_ca", "other"),
        Line(folder, "alone", "alone"),
        Line(folder, "old", newest=ssl.TLSVersion.TLSv1_1),
        Line(folder, "mutual", client_ca="ca"),
        Line(folder, "mutual12", client_ca="ca", newest=ssl.TLSVersion.TLSv1_2),
        Line(folder, "strangers", client_ca="other_ca"),
        Line(folder, "silent", handshake=False),
        Line(folder, "slammed", handshake=None),
        Line(folder, "closing", always="/close"),
        Line(folder, "cutting", always="/cut"),
        Line(folder, "endless", always="/endless"),
        Line(folder, "dripping", always="/drip"),
    ]
    for line in lines:
        print(line.name, line.port)
    print("ready", flush=True)
    by_name = {line.name: line for line in lines}
    for text in sys.stdin:
        print(command(by_name, text.split()), flush=True)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        raise SystemExit(__doc__)
    main(sys.argv[1])
