"""Reads what the benchmarked programs wrote, to see that all did the same."""

import collections
import hashlib
import re
import sys
import xml.parsers.expat


class Content:
    """What a document holds: how often each element with its attributes occurs, how much text, and (XML) a digest of
    everything in its order."""

    def __init__(self):
        self.elements = collections.Counter()
        self.characters = 0
        self.digest = None

    def count(self, tag, attributes):
        self.elements[(tag, tuple(sorted(attributes.items())))] += 1


def parse(path, begin, end, characters, instruction):
    parser = xml.parsers.expat.ParserCreate()
    parser.buffer_text = True
    parser.StartElementHandler, parser.EndElementHandler = begin, end
    parser.CharacterDataHandler, parser.ProcessingInstructionHandler = characters, instruction
    with open(path, "rb") as file:
        parser.ParseFile(file)


def xml_content(path):
    content, order, text = Content(), hashlib.sha256(), []

    def flush():
        joined = "".join(text)
        text.clear()
        if joined.strip():
            content.characters += len(joined)
            order.update(b"T" + joined.encode())

    def begin(tag, attributes):
        flush()
        content.count(tag, attributes)
        order.update(("B" + tag + repr(sorted(attributes.items()))).encode())

    def end(tag):
        flush()
        order.update(b"E")

    def instruction(target, data):
        flush()
        order.update(("I" + target + data).encode())

    parse(path, begin, end, text.append, instruction)
    content.digest = order.hexdigest()
    return content


MIF_LINE = re.compile(rb"\s*<(ETag|AttrName|AttrValue|String|AttributeDisplay) ?(?:`(.*)')?")
MIF_ESCAPE = re.compile(r"\\x([0-9a-f]{2}) ")
FRAME_ROMAN = dict(zip(("80", "85", "86", "8a", "9a", "9f", "a7"), "ÄÖÜäöüß"))


def decode(text):
    return MIF_ESCAPE.sub(lambda escape: FRAME_ROMAN[escape.group(1)], text.decode("ascii"))


def mif_content(path):
    """Reads the layout that the generator writes: a statement a line."""
    content = Content()
    tag, attributes, values = None, {}, None
    with open(path, "rb") as file:
        for line in file:
            match = MIF_LINE.match(line)
            if not match:
                continue
            statement, text = match.groups()
            if statement == b"String":
                content.characters += len(decode(text))
            elif statement == b"ETag":
                tag, attributes = decode(text), {}
            elif statement == b"AttrName":
                values = attributes[decode(text)] = []
            elif statement == b"AttrValue":
                values.append(decode(text))
            elif tag is not None:
                content.count(tag, {name: " ".join(words) for name, words in attributes.items()})
                tag = None
    return content


def check(name, content, first):
    if content.digest and content.digest != first.digest or content.elements != first.elements:
        differing = (content.elements - first.elements) + (first.elements - content.elements)
        examples = "".join(f"\n  {tag} {dict(attributes)}" for tag, attributes in list(differing)[:5])
        count = sum(differing.values())
        sys.exit(f"bench: the result of {name} is another than pugixml's: {count} elements differ{examples}")
    if content.characters != first.characters:
        sys.exit(f"bench: the result of {name} has {content.characters} characters, pugixml's {first.characters}")


def same_xml(ours, theirs):
    """Ends the run unless the files hold the same. An empty element may have a blank before its slash."""
    if ours.read_bytes() != theirs.read_bytes().replace(b" />", b"/>"):
        check(ours, xml_content(ours), xml_content(theirs))


def marked_text(path):
    """Counts which text has which mark, and digests both. A mark is a pair of processing instructions around text, or
    the attribute `mark` of an element, which holds for what is in it."""
    marks, spans, counts, order = [None], [], collections.Counter(), hashlib.sha256()
    text, last = [], None

    def flush():
        nonlocal last
        joined, mark = "".join(text), spans[-1] if spans else marks[-1]
        text.clear()
        if joined.strip():
            counts[mark] += len(joined)
            order.update((joined if mark == last else f"\0{mark}\0{joined}").encode())
            last = mark

    def begin(_, attributes):
        flush()
        marks.append(attributes.get("mark", marks[-1]))

    def end(_):
        flush()
        marks.pop()

    def instruction(target, data):
        flush()
        if target == "qelm" and data == "end":
            spans.pop()
        elif target == "qelm":
            said = dict(re.findall(r'(\w+)="(\w+)"', data))
            spans.append(f"{said['underline']} {said['color']}")

    parse(path, begin, end, text.append, instruction)
    return counts, order.hexdigest()
