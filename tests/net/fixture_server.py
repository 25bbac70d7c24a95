#!/usr/bin/env python3
"""A small HTTP server that misbehaves on purpose, for the network tests.

Prints its port (127.0.0.1, chosen by the system) on its first line. The first path
segment chooses the behaviour; the rest of the path is ignored, so that a base address
like http://127.0.0.1:PORT/nolength serves ".../downloads.ini" that way too.

  /nolength/...?size=N          N bytes, no Content-Length, closed at the end
  /zero/...                     Content-Length: 0
  /status/CODE/...              that status with a short body
  /short/...?announce=N&send=M  announces N bytes, sends M, closes
  /stall/...?announce=N&send=M  announces N bytes, sends M, then nothing more
  /silent/...                   never answers
  /redirect/...?to=URL&code=C   redirect (302 unless C is given) to URL
  /say/TEXT/...                 TEXT (percent-encoded) with Content-Length

Stalling answers give up after STALL_SECONDS; the tests stop the server long before.
"""

import http.server
import socketserver
import time
import urllib.parse

STALL_SECONDS = 60


def pattern(size):
    """Bytes that are not all alike, so that shifted data is noticed."""
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
        if length:
            self.send_header("Content-Length", str(len(body)))
        for name, value in extra:
            self.send_header(name, value)
        self.end_headers()
        if not head:
            self.wfile.write(body)

    def answer(self, head):
        url = urllib.parse.urlsplit(self.path)
        parts = [p for p in url.path.split("/") if p] + ["", ""]
        query = dict(urllib.parse.parse_qsl(url.query))
        mode = parts[0]

        def number(name, default):
            return int(query.get(name, default))

        if mode == "nolength":
            self.send_body(head, pattern(number("size", 100)), length=False)
        elif mode == "zero":
            self.send_body(head, b"")
        elif mode == "status" and parts[1].isdigit():
            self.send_body(head, b"status page\n", status=int(parts[1]))
        elif mode in ("short", "stall"):
            self.send_body(head, b"", extra=[("Content-Length", str(number("announce", 50000)))], length=False)
            if not head:
                self.wfile.write(pattern(number("send", 20000)))
                self.wfile.flush()
                if mode == "stall":
                    time.sleep(STALL_SECONDS)
        elif mode == "silent":
            time.sleep(STALL_SECONDS)
        elif mode == "redirect":
            self.send_body(head, b"moved\n", status=number("code", 302), extra=[("Location", query.get("to", "/"))])
        elif mode == "say":
            self.send_body(head, urllib.parse.unquote(parts[1]).encode("utf-8"))
        else:
            self.send_body(head, b"not here\n", status=404)


class Server(socketserver.ThreadingMixIn, http.server.HTTPServer):
    daemon_threads = True
    allow_reuse_address = True


if __name__ == "__main__":
    server = Server(("127.0.0.1", 0), Handler)
    print(server.server_address[1], flush=True)
    server.serve_forever()
