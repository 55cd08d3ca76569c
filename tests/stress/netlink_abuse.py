#!/usr/bin/env python3
"""Net Link under abuse, on 127.0.0.1 only: the real program serving a timesheet of 1,000 rows is sent
10,000 sequential requests, 200 clients that connect and send nothing, a request of 64 MiB, a request
dribbled one byte every 100 ms, and 200 clients that leave in the middle of the page. After each, a plain
request must still get the whole page, and a client that sends nothing holds the server only for its ten
seconds. Prints the figures and the program's resident memory before and
after; exits 1 when the server stops serving or its memory grows without bound.

netlink_abuse.py BUILD_DIR
"""
import os
import select
import socket
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "journeys"))
from desktop import Desktop, row  # noqa: E402

ADDRESS = ("127.0.0.1", 2000)
GET = b"GET / HTTP/1.1\r\nHost: 127.0.0.1:2000\r\n\r\n"


def fetch(request=GET, timeout=20.0):
    """The whole answer to one request, the server closing at its end."""
    with socket.create_connection(ADDRESS, timeout=timeout) as client:
        client.sendall(request)
        answer = bytearray()
        while True:
            chunk = client.recv(65536)
            if not chunk:
                return bytes(answer)
            answer += chunk


def whole_page(answer):
    return answer.startswith(b"HTTP/1.0 200 OK\r\n") and answer.rstrip().endswith(b"</html>")


def main():
    desktop = Desktop(sys.argv[1])
    rows = [row("23/11/2026", "J%04d" % i, 30 + i % 90, project="Project %d" % i, client="Client %d" % (i % 40))
            for i in range(1000)]
    sheet = desktop.write_sheet("abuse.vlk", {"starthrs": "", "startmin": "", "rows": rows})
    desktop.start(sheet)
    failures = []
    try:
        deadline = time.time() + 20
        while True:
            try:
                page = fetch()
                break
            except OSError:
                if time.time() > deadline:
                    print("FAIL: Net Link never answered")
                    return 1
                time.sleep(0.2)
        print("page: %d bytes" % len(page))
        time.sleep(1)
        before = desktop.resident_kib()
        print("resident before: %d KiB" % before)

        def still_serving(after):
            ok = whole_page(fetch())
            print("  %-32s then a plain request: %s, resident %d KiB" % (
                after, "whole page" if ok else "NO PAGE", desktop.resident_kib()))
            if not ok:
                failures.append("no page after " + after)

        began = time.time()
        served = sum(whole_page(fetch()) for _ in range(10000))
        took = time.time() - began
        print("10,000 sequential requests: %d whole pages in %.1f s (%.0f /s)" % (served, took, 10000 / took))
        if served != 10000:
            failures.append("%d of 10,000 sequential requests got no page" % (10000 - served))
        still_serving("10,000 requests")

        # Connections that send nothing: those beyond the system's queue wait for it in the handshake.
        idle = []
        for _ in range(200):
            client = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
            client.setblocking(False)
            client.connect_ex(ADDRESS)
            idle.append(client)
        time.sleep(2)
        _, writable, _ = select.select([], idle, [], 0)
        print("200 silent clients: %d connected in 2 s" % len(writable))
        for client in idle:
            client.close()
        still_serving("200 silent clients")

        with socket.create_connection(ADDRESS):
            time.sleep(0.5)
            began = time.time()
            ok = whole_page(fetch(timeout=60))
            print("a request behind one silent client: %s after %.1f s" % ("whole page" if ok else "NO PAGE",
                                                                           time.time() - began))
            if not ok:
                failures.append("a silent client held Net Link")

        began = time.time()
        with socket.create_connection(ADDRESS, timeout=60) as client:
            client.sendall(b"GET / HTTP/1.1\r\nX-Padding: ")
            block = b"x" * (1 << 20)
            for _ in range(64):
                client.sendall(block)
            client.sendall(b"\r\n\r\n")
            answer = bytearray()
            while chunk := client.recv(65536):
                answer += chunk
        print("64 MiB request: %s in %.1f s" % ("whole page" if whole_page(answer) else "NO PAGE",
                                                 time.time() - began))
        still_serving("64 MiB request")

        began = time.time()
        with socket.create_connection(ADDRESS, timeout=30) as client:
            for byte in GET:
                client.send(bytes([byte]))
                time.sleep(0.1)
            answer = bytearray()
            while chunk := client.recv(65536):
                answer += chunk
        print("request dribbled a byte every 100 ms: %s after %.1f s" % (
            "whole page" if whole_page(answer) else "NO PAGE", time.time() - began))
        if not whole_page(answer):
            failures.append("no page for the dribbled request")
        still_serving("dribbled request")

        for _ in range(200):
            client = socket.create_connection(ADDRESS, timeout=10)
            client.sendall(GET)
            client.recv(1024)
            # Leave at once with a reset, the way a browser tab closed mid-page does.
            client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\x01\x00\x00\x00\x00\x00\x00\x00")
            client.close()
        print("200 clients gone mid-page")
        still_serving("200 clients gone mid-page")

        time.sleep(2)
        after = desktop.resident_kib()
        print("resident after: %d KiB (%+d KiB)" % (after, after - before))
        if after > before + 64 * 1024:
            failures.append("resident memory grew by %d KiB" % (after - before))
        if desktop.app.poll() is not None:
            failures.append("the program ended")
    finally:
        for failure in failures:
            print("FAIL:", failure)
        desktop.close()
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
