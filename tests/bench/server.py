#!/usr/bin/python3
"""The server that the benchmarks download from: as fast as the machine permits, and the same for both sides.

usage: server.py

Responds to GET /SIZE.pdf, with any query, with SIZE bytes that begin as a PDF does. Prints its URL,
"http://127.0.0.1:PORT", and serves until its standard input ends.
"""
import os
import re
import socket
import sys
import tempfile
import threading

HEADER = b"%PDF-1.4\n"
FILLING = b"% filling filling filling filling filling filling filling filli\n"


class Bodies:
    """Files with the bodies, created at their first request; the kernel alone sends them."""

    def __init__(self):
        self.files = {}
        self.lock = threading.Lock()

    def file(self, size):
        with self.lock:
            if size not in self.files:
                body = tempfile.TemporaryFile()
                body.write(HEADER)
                body.write((FILLING * (size // len(FILLING) + 1))[: size - len(HEADER)])
                body.flush()
                self.files[size] = body
            return self.files[size]


def serve(connection, bodies):
    with connection:
        request = b""
        while b"\r\n\r\n" not in request:
            received = connection.recv(4096)
            if not received:
                return
            request += received
        wanted = re.match(rb"GET /(\d+)\.pdf[? ]", request)
        if not wanted:
            connection.sendall(b"HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n")
            return
        size = int(wanted.group(1))
        connection.sendall(
            b"HTTP/1.1 200 OK\r\nContent-Type: application/pdf\r\nConnection: close\r\n"
            b"Content-Length: %d\r\n\r\n" % size
        )
        offset = 0
        while offset < size:
            offset += os.sendfile(connection.fileno(), bodies.file(size).fileno(), offset, size - offset)


def serve_quietly(connection, bodies):
    try:
        serve(connection, bodies)
    except OSError:
        pass  # the client has disconnected


def accept(listener, bodies):
    while True:
        connection, _ = listener.accept()
        threading.Thread(target=serve_quietly, args=(connection, bodies), daemon=True).start()


def main():
    bodies = Bodies()
    listener = socket.create_server(("127.0.0.1", 0))
    print(f"http://127.0.0.1:{listener.getsockname()[1]}", flush=True)
    threading.Thread(target=accept, args=(listener, bodies), daemon=True).start()
    sys.stdin.read()


main()
