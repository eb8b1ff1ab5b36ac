"""Runs a program of the guided tour and compares what it prints with the comment at the end of its source.

usage: tour.py PROGRAM SOURCE. The program of the downloads is given the URL of a file that is served here.
"""

import functools
import http.server
import pathlib
import re
import subprocess
import sys
import tempfile
import threading


class Quiet(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *arguments):
        pass


def main(program, source):
    text = pathlib.Path(source).read_text()
    wanted = re.search(r"^/\* Prints:\n(.*)\*/\n\Z", text, re.DOTALL | re.MULTILINE).group(1)
    with tempfile.TemporaryDirectory() as folder:
        pathlib.Path(folder, "served.txt").write_text("0123456789")
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Quiet, directory=folder))
        threading.Thread(target=server.serve_forever, daemon=True).start()
        url = f"http://127.0.0.1:{server.server_port}/served.txt"
        run = subprocess.run([program] + ([url] if "usage:" in text else []), capture_output=True, text=True)
        server.shutdown()
    if run.returncode != 0 or run.stdout != wanted:
        print(f"exit code {run.returncode}\n--- wanted\n{wanted}--- printed\n{run.stdout}--- errors\n{run.stderr}")
        return 1
    return 0


sys.exit(main(*sys.argv[1:]))
