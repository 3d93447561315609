"""Filters one document by calls, as examples/c/filter.c does:

    python3 filter.py LIBRARY PROFILE DOCUMENT CATEGORY SCHEME OUTPUT

LIBRARY is libqelm.so, by its path or by its name where the system finds it.
"""

import ctypes
import sys

NOTIFIED = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_char_p, ctypes.c_char_p)


class Session:
    """One session. Use it in a with statement: it has to be ended."""

    def __init__(self, library, profile):
        self.library = ctypes.CDLL(library)
        self.library.qelm_last_message.restype = ctypes.c_char_p
        self.handle = ctypes.c_void_p()
        started = self.library.qelm_start(profile.encode(), ctypes.byref(self.handle))
        if not started:
            message = self.last_message()
            self.end()
            raise RuntimeError(message)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()

    def end(self):
        self.library.qelm_end(self.handle)
        self.handle = ctypes.c_void_p()

    def last_message(self):
        return self.library.qelm_last_message(self.handle).decode()

    def check(self, done):
        if not done:
            raise RuntimeError(self.last_message())

    def call(self, *fields):
        """The integer that answers the call, and who gave it."""
        result, source = ctypes.c_int(), ctypes.c_char_p()
        text = "---".join(fields).encode()
        self.check(self.library.qelm_call(self.handle, text, ctypes.byref(result), ctypes.byref(source)))
        return result.value, source.value.decode()

    def open(self, path):
        self.check(self.library.qelm_open(self.handle, path.encode()))

    def save(self, path, new_path=None):
        self.check(self.library.qelm_save(self.handle, path.encode(), new_path and new_path.encode()))

    def on_notification(self, function):
        self.handler = NOTIFIED(lambda _, client, text: function(client.decode(), text.decode()))
        self.check(self.library.qelm_on_notification(self.handle, self.handler, None))


def main(library, profile, document, category, scheme, output):
    with Session(library, profile) as session:
        session.on_notification(lambda client, text: print(f"{client} is told: {text}"))
        for fields in (
            ("SetNotificationClient", "example"),
            ("SetNotificationStatus", "1"),
            ("SetParm", "Filter_Type", "Source"),
            ("SetScheme", "filter", category, scheme, "True"),
        ):
            print("---".join(fields), "->", *session.call(*fields))
        session.open(document)
        result, source = session.call("FilterFile", document)
        print(f"FilterFile---{document} -> {result} {source}")
        if result != 1:
            sys.exit(1)
        session.save(document, output)


if __name__ == "__main__":
    if len(sys.argv) != 7:
        sys.exit(__doc__)
    main(*sys.argv[1:])
