#!/usr/bin/env python3
"""A small HTTP server that misbehaves on purpose, for the network tests.

Listens on 127.0.0.1 on a free port and prints that port on its first line. The first
path segment chooses the behaviour; what follows it is ignored, so that a test can point
a base address at e.g. http://127.0.0.1:PORT/nolength and have ".../downloads.ini"
served that way.

  /file/...?size=N            N bytes with Content-Length
  /nolength/...?size=N        N bytes, no Content-Length, connection closed at the end
  /zero/...                   Content-Length: 0
  /status/CODE/...            that status with a short body
  /short/...?announce=N&send=M  announces N bytes, sends M, closes
  /stall/...?announce=N&send=M  announces N bytes, sends M, then sends nothing more
  /silent/...                 reads the request and never answers
  /redirect/...?to=URL&code=C redirect (302 unless C is given) to URL
  /text/...?body=TEXT         TEXT (UTF-8) with Content-Length
  /say/TEXT/...               TEXT (percent-encoded in the path) with Content-Length

Stalling answers hold their connection for at most STALL_SECONDS; the tests stop the
server long before that.
"""

import http.server
import socketserver
import sys
import time
import urllib.parse

STALL_SECONDS = 60


def pattern(size):
    """Deterministic bytes that are not all alike, so that shifted data is noticed."""
    return bytes((i * 7 + 3) % 251 for i in range(size))


class Handler(http.server.BaseHTTPRequestHandler):
    # HTTP/1.0 answers close their connection, which is what ends a body without length.
    protocol_version = "HTTP/1.0"

    def log_message(self, format, *args):  # noqa: A002 - the base class's name
        pass

    def do_HEAD(self):
        self.answer(head=True)

    def do_GET(self):
        self.answer(head=False)

    def send_body(self, head, body, length=True, status=200, extra=()):
        self.send_response(status)
        self.send_header("Content-Type", "application/octet-stream")
        if length:
            self.send_header("Content-Length", str(len(body)))
        for name, value in extra:
            self.send_header(name, value)
        self.end_headers()
        if not head:
            self.wfile.write(body)

    def hold(self):
        deadline = time.monotonic() + STALL_SECONDS
        while time.monotonic() < deadline:
            time.sleep(0.2)

    def answer(self, head):
        url = urllib.parse.urlsplit(self.path)
        parts = [p for p in url.path.split("/") if p]
        query = dict(urllib.parse.parse_qsl(url.query, keep_blank_values=True))
        mode = parts[0] if parts else ""

        def number(name, default):
            try:
                return int(query.get(name, default))
            except ValueError:
                return default

        if mode == "file":
            self.send_body(head, pattern(number("size", 3000)))
        elif mode == "nolength":
            self.send_body(head, pattern(number("size", 100)), length=False)
        elif mode == "zero":
            self.send_body(head, b"")
        elif mode == "status" and len(parts) > 1 and parts[1].isdigit():
            self.send_body(head, b"status page\n", status=int(parts[1]))
        elif mode in ("short", "stall"):
            announce = number("announce", 50000)
            send = number("send", 20000)
            self.send_response(200)
            self.send_header("Content-Length", str(announce))
            self.end_headers()
            if not head:
                self.wfile.write(pattern(send))
                self.wfile.flush()
                if mode == "stall":
                    self.hold()
            self.close_connection = True
        elif mode == "silent":
            self.hold()
        elif mode == "redirect":
            code = number("code", 302)
            self.send_body(head, b"moved\n", status=code, extra=[("Location", query.get("to", "/"))])
        elif mode == "say" and len(parts) > 1:
            self.send_body(head, urllib.parse.unquote(parts[1]).encode("utf-8"))
        elif mode == "text":
            self.send_body(head, query.get("body", "").encode("utf-8"))
        else:
            self.send_body(head, b"not here\n", status=404)


class Server(socketserver.ThreadingMixIn, http.server.HTTPServer):
    daemon_threads = True
    allow_reuse_address = True


def main():
    server = Server(("127.0.0.1", 0), Handler)
    print(server.server_address[1], flush=True)
    try:
        server.serve_forever()
    except KeyboardInterrupt:
        pass
    return 0


if __name__ == "__main__":
    sys.exit(main())
