"""A server of objects in memory that answers what reading by S3 asks for."""

import contextlib
import re
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import parse_qs, unquote, urlsplit
from xml.sax.saxutils import escape

BUCKET = "bucket"
NAMESPACE = "http://s3.amazonaws.com/doc/2006-03-01/"
MODIFIED = "2024-02-29T12:00:00.000Z", "Thu, 29 Feb 2024 12:00:00 GMT"


@contextlib.contextmanager
def serve(objects):
    """Serves a dictionary of keys and bytes in BUCKET. Gives the function that makes their URIs."""
    server = ThreadingHTTPServer(("localhost", 0), Handler)
    server.objects = objects
    thread = threading.Thread(target=server.serve_forever, kwargs={"poll_interval": 0.01})
    thread.start()
    options = f"endpoint_override=localhost:{server.server_port}&scheme=http&region=us-east-1"
    try:
        yield lambda key: f"s3://access:secret@{BUCKET}/{key}?{options}"
    finally:
        server.shutdown()
        thread.join()
        server.server_close()


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_HEAD(self):
        self.do_GET()

    def do_GET(self):
        url = urlsplit(self.path)
        _, bucket, key = unquote(url.path + "/").split("/", 2)
        key = key.removesuffix("/")
        if bucket != BUCKET:
            self.refuse("NoSuchBucket")
        elif key == "" and self.command == "HEAD":
            self.answer(200, b"")
        elif key == "":
            self.list_keys({name: values[0] for name, values in parse_qs(url.query).items()})
        elif key in self.server.objects:
            self.send_object(self.server.objects[key])
        else:
            self.refuse("NoSuchKey")

    def send_object(self, content):
        headers = {"Last-Modified": MODIFIED[1], "Accept-Ranges": "bytes"}
        range_ = re.fullmatch(r"bytes=(\d+)-(\d+)", self.headers.get("Range", ""))
        if range_ is None:
            self.answer(200, content, headers)
            return
        first, last = int(range_[1]), min(int(range_[2]), len(content) - 1)
        headers["Content-Range"] = f"bytes {first}-{last}/{len(content)}"
        self.answer(206, content[first:last + 1], headers)

    def list_keys(self, query):
        prefix, delimiter = query.get("prefix", ""), query.get("delimiter")
        keys, folders = [], set()
        for key in sorted(self.server.objects):
            rest = key.removeprefix(prefix)
            if not key.startswith(prefix):
                continue
            if delimiter and delimiter in rest:
                folders.add(prefix + rest.split(delimiter)[0] + delimiter)
            else:
                keys.append(key)
        entries = [f"<Contents><Key>{escape(key)}</Key><Size>{len(self.server.objects[key])}</Size>"
                   f"<LastModified>{MODIFIED[0]}</LastModified></Contents>" for key in keys]
        entries += [f"<CommonPrefixes><Prefix>{escape(folder)}</Prefix></CommonPrefixes>"
                    for folder in sorted(folders)]
        self.answer_xml(200, f'<ListBucketResult xmlns="{NAMESPACE}"><Name>{BUCKET}</Name>'
                             f"<Prefix>{escape(prefix)}</Prefix><KeyCount>{len(entries)}</KeyCount>"
                             f"<IsTruncated>false</IsTruncated>{''.join(entries)}</ListBucketResult>")

    def refuse(self, code):
        self.answer_xml(404, f"<Error><Code>{code}</Code><Message>{code}</Message></Error>")

    def answer_xml(self, status, text):
        self.answer(status, text.encode(), {"Content-Type": "application/xml"})

    def answer(self, status, content, headers={}):
        self.send_response(status)
        for name, value in headers.items():
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(content)))
        self.end_headers()
        if self.command != "HEAD":
            self.wfile.write(content)

    def log_message(self, *_):
        pass
