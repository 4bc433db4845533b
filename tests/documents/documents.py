#!/usr/bin/env python3
"""Whether the documents tell the truth.

What they point at exists: links and their anchors, pictures, paths, programs, their options, and targets of make. And
docs/reference.md is held against the sources: every text that the program can log, or show as a notice, in a box, in its
instructions or on a button, stands there, and every message that stands there exists.
"""

import re
import sys
from collections import namedtuple
from functools import lru_cache
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
complaints = []


def expect(good, complaint):
    if not good:
        complaints.append(complaint)


# ---- documents


class Document:
    def __init__(self, file):
        self.file = file  # relative to the root
        text = (ROOT / file).read_text(encoding="utf-8")
        self.blocks = re.findall(r"^```.*?\n(.*?)^```", text, re.S | re.M)
        self.prose = re.sub(r"^```.*?^```.*?$", "", text, flags=re.S | re.M)
        self.headings = re.findall(r"^#+ (.*)", self.prose, re.M)
        self.links = re.findall(r"\]\(([^)\s]+)\)", self.prose)
        self.codes = sorted(set(re.findall(r"`([^`\n]+)`", self.prose)))

    def target_of(self, link):
        """The file that is linked, relative to the root; None for a web page."""
        if "://" in link:
            return None
        path = link.partition("#")[0]
        target = (ROOT / self.file).parent / path if path else ROOT / self.file
        return target.resolve().relative_to(ROOT)

    def codes_and_lines(self):
        return self.codes + [line for block in self.blocks for line in block.splitlines()]


DOCUMENTS = [Document("README.md"), Document("CHANGELOG.md")]
DOCUMENTS += [Document(f"docs/{path.name}") for path in sorted((ROOT / "docs").glob("*.md"))]


def anchor_of(heading):
    return re.sub(r"[^\w-]", "", heading.replace(" ", "-")).lower()


def links_lead_somewhere():
    seen = 0
    for document in DOCUMENTS:
        for link in document.links:
            target = document.target_of(link)
            if target is None:
                continue
            seen += 1
            if not (ROOT / target).exists():
                complaints.append(f"{document.file} links to {link}, which doesn't exist")
            elif "#" in link:
                fitting = [h for h in Document(target).headings if anchor_of(h) == link.partition("#")[2]]
                expect(len(fitting) == 1, f"{document.file} links to {link}: {target} needs one such heading")
    expect(seen > 80, f"only {seen} links were seen")


def every_picture_is_shown():
    shown = {document.target_of(link) for document in DOCUMENTS for link in document.links}
    for picture in (ROOT / "docs/images").iterdir():
        expect(picture.relative_to(ROOT) in shown, f"{picture} is in no document")


def pages_of_the_manual_link_to_pages_of_the_manual():
    """It is made of some of the documents; what they link to has to come along."""
    listed = (ROOT / "docs/CMakeLists.txt").read_text()
    pages = [document for document in DOCUMENTS if "/" + Path(document.file).name in listed]
    for document in pages:
        for target in filter(None, map(document.target_of, document.links)):
            expect(target.suffix != ".md" or "/" + target.name in listed,
                   f"{document.file} links to {target}: add it to the pages in docs/CMakeLists.txt")
    expect(len(pages) >= 4, "the manual's pages weren't found")


# The sources that know the programs' options.
PROGRAMS = {
    "vantrel": "src/qt/main.cpp",
    "vantrel-headless": "src/headless/options.cpp",
    "vantrel-solve": "tools/vantrel_solve.cpp",
    "vantrel-catalog": "tools/vantrel_catalog.cpp",
    "vantrel-pictures": "tools/window_pictures.cpp",
    "make-catalog": "tools/make_catalog.cpp",
    "fault_table": "tests/faults/fault_table.cpp",
}


def commands_can_be_given():
    makefile = (ROOT / "Makefile").read_text()
    scripts = [path for folder in ("bench", "tools", "scripts") for path in (ROOT / folder).glob("*.py")]
    every_program = "".join(path.read_text() for path in [ROOT / source for source in PROGRAMS.values()] + scripts)
    targets = options = 0
    for document in DOCUMENTS:
        for code in document.codes_and_lines():
            words = code.split()
            place = f"{document.file}: `{code}`"
            if len(words) >= 2 and words[0] == "make":
                targets += 1
                expect(f"\n{words[1]}:" in makefile, f"{place}: the Makefile has no such target")
            if not words:
                continue
            if words[0].startswith("--"):
                known = every_program
            else:
                script = words[0] if words[0].endswith((".py", ".sh")) else PROGRAMS.get(Path(words[0]).name)
                if script is None or not (ROOT / script).exists():  # or a script that is named without its folder
                    continue
                known = (ROOT / script).read_text()
            for option in (word.partition("=")[0] for word in words if word.startswith("--")):
                options += 1
                expect(f'"{option}"' in known or f'"{option[2:]}"' in known, f"{place}: nobody knows {option}")
    expect(targets > 5 and options > 10, f"only {targets} targets and {options} options were seen")


def paths_exist():
    """The documents name files from the root, or from src/."""
    lists = ("src/qt", "src/headless", "tools", "src")
    programs = {name for folder in lists
                for name in re.findall(r"add_executable\(([\w-]+)", (ROOT / folder / "CMakeLists.txt").read_text())}
    seen = 0
    for document in DOCUMENTS:
        if document.file == "docs/reference.md":  # its paths are the program's texts
            continue
        for word in (word for code in document.codes_and_lines() for word in code.split()):
            if "/" not in word or not re.fullmatch(r"[\w.-]+(/[\w.-]+)*/?", word, re.ASCII) or word == "drives/c":
                continue
            seen += 1
            built = re.fullmatch("build/release/bin/(.*)", word)
            exists = (ROOT / word).exists() or (ROOT / "src" / word).exists()
            expect(built[1] in programs | {""} if built else exists,
                   f"{document.file}: `{word}` doesn't exist, nor below src/")
    expect(seen > 50, f"only {seen} paths were seen")


# ---- texts in C++ sources, put together as the program puts them together

# Literals joined by + are one text, with "…" for everything between them: "Plate … Solved"; a pattern's places are "…",
# too. The calls are the functions in whose arguments it stands, the innermost last.
SourceText = namedtuple("SourceText", "file line text calls")

TOKEN = re.compile(r"""//[^\n]*|/\*.*?\*/|^[ \t]*\#[^\n]*|'(?:\\.|[^'\\])*'
                       |R"(?P<delimiter>[^(]*)\((?P<raw>.*?)\)(?P=delimiter)"|"(?P<text>(?:\\.|[^"\\])*)"
                       |(?P<word>\d[\w.']*|\w+)|(?P<sign>::|\S)""", re.S | re.M | re.X)


def unescaped(literal):
    literal = re.sub(r"%[1-9]", "…", literal)
    return re.sub(r"\\(.)", lambda match: " " if match[1] in "rnt" else match[1], literal)


def tokens_of(source):
    """Kind, text and line of each; literals in a row are one, and std::string("...") is its literal."""
    tokens = []
    line, counted = 1, 0
    for match in TOKEN.finditer(source):
        line += source.count("\n", counted, match.start())
        counted = match.start()
        raw, text = match["raw"], match["text"]
        if raw is not None or text is not None:
            literal = unescaped(text) if raw is None else raw
            if tokens and tokens[-1][0] == "text":
                tokens[-1][1] += literal
            else:
                tokens.append(["text", literal, line])
        elif match["word"] or match["sign"]:
            tokens.append(["word" if match["word"] else "sign", match[0], line])
        if [token[1] for token in tokens[-6:-2]] == ["std", "::", "string", "("] and tokens[-1][1] == ")" \
                and tokens[-2][0] == "text":
            tokens[-6:] = [tokens[-2]]
    return tokens


def texts_of(source, file):
    """Follows the tokens through brackets and puts each sum of literals together."""
    found = []
    brackets = [["", 0, ""]]  # the sum, the line of its first literal, and whose arguments these are
    before = ""

    def between():
        if not brackets[-1][0].endswith("…"):
            brackets[-1][0] += "…"

    def finish():
        text, line, _ = brackets[-1]
        if line:
            found.append(SourceText(file, line, text, [bracket[2] for bracket in brackets if bracket[2]]))
        brackets[-1][:2] = ["", 0]

    for kind, text, line in tokens_of(source):
        if kind == "text":
            brackets[-1][0] += text
            brackets[-1][1] = brackets[-1][1] or line
        elif text in ("(", "[", "{"):
            between()
            brackets.append(["", 0, before if text == "(" and re.match(r"[A-Za-z_]", before) else ""])
        elif text in (")", "]", "}"):
            finish()
            if len(brackets) > 1:
                brackets.pop()
            if text == "}":
                finish()
        elif text in (",", ";", "?", ":", "=", "&", "|", "!", "return"):
            finish()
        elif text != "+":
            between()
        before = "" if kind == "text" else text
    return found


def sources_are_read_as_the_program_is_made():
    for source, texts in (
        (r'log("Plate " + count(n) + " Solved");', ["Plate … Solved"]),
        ('log("Plate "\n "solved");', ["Plate solved"]),
        (r'numbered("Plate ", n, " Solved");', ["Plate ", " Solved"]),
        (r'log(std::string(good ? "Test passed" : "Test failed") + "!");', ["Test passed", "Test failed", "…!"]),
        (r'joinLines({"One", "Two " + two});', ["One", "Two …"]),
        (r'log("say \"so\"\r\nand \\ on");', ['say "so"  and \\ on']),
        ('// "a"\n/* "b" */ char c = \'"\'; // "c"\n#include "d.h"\nint n = 1\'000; f("e");', ["e"]),
        (r'popUp(std::string(" Connecting ") + name + "!", 5);', [" Connecting …!"]),
        (r'return name + " is connected";', ["… is connected"]),
        (r'Words::tr("Plate %1 of %2", {"3", n});', ["Plate … of …", "3"]),
    ):
        found = [text.text for text in texts_of(source, "x.cpp")]
        expect(found == texts, f"{source}: {found}")
    second = texts_of('// one\n\nstep([&] { log("a" + b("c")); });', "x.cpp")[1]
    expect((second.calls, second.line) == (["step", "log"], 3), f"calls: {second}")


def parts_of(text):
    """The parts around "…"; blanks in a row count as one."""
    return [part for part in (" ".join(part.split()) for part in text.split("…")) if part]


# ---- the reference

# Where the texts of a source are told, by the beginning of its name; the first that fits. Of those behind the mark only what
# refuses something is a message.
REFUSALS = "What the built-in instruments refuse"
PLACES = [
    ("src/app/", "At the start"),
    ("src/devices/slew_watch", "Telescope"),
    ("src/devices/telescope", "Telescope"),
    ("src/devices/", "Camera and imaging program"),
    ("src/engine/", "Measurement"),
    ("src/correction/polar_", "Polar plot and measurements"),
    ("src/correction/past_nights", "Polar plot and measurements"),
    ("src/correction/", "Correction"),
    ("src/platesolve/", "Plate solving"),
    ("src/hosts/", "Real devices"),
    ("src/station/file_solver", "Plate solving"),
    ("src/station/", "Real devices"),
    ("src/platform/http/", REFUSALS),
    ("src/platform/camera_hardware.h", REFUSALS),
    ("src/platform/", "Any other failure"),
    ("src/observatory/panel/", "Polar Axis Simulator"),
    ("src/solver/unsolved_reason", "Plate solving"),
]
REFUSING_ROOMS = tuple(f"src/{room}/" for room in
                       ("sky", "fits", "pictures", "catalogs", "solver", "imaging", "helpers", "observatory"))

# Ends of the names of sources whose texts aren't messages.
SILENT = (
    "_panel.h",
    "_panel.cpp",  # captions, which the tables of controls tell of
    "os_name.cpp",  # the names behind "OS:"
    "svg.cpp",  # what a picture's file holds
    "picture_cards.cpp",  # what a picture's header tells
    "png_writing.cpp",  # the next eight belong to vantrel-catalog, make-catalog and vantrel-solve
    "catalog_writer.cpp",
    "deep_catalog.cpp",
    "star_table.cpp",
    "tycho_distribution.cpp",
    "tycho_lines.cpp",
    "star_patterns.cpp",
    "pattern_store.cpp",
    "command_line.cpp",  # what only those are told who call a program by hand
    "settings_file.cpp",  # the next three: SettingsStore tells of these failures in its own words
    "durable_file_posix.cpp",
    "durable_file_win32.cpp",
    "guarded_call_posix.cpp",  # readers of files tell of these in theirs
    "input_file_win32.cpp",
    "sockets_win32.cpp",  # the words that other systems have themselves
    "own_runs_posix.cpp",  # the next two belong to vantrel-solve
    "own_runs_win32.cpp",
    "whole_file.cpp",
    "user_paths_posix.cpp",  # the next two: what only standard error is told, before or after all windows
    "user_paths_win32.cpp",
    "queued_event_loop.cpp",
)

# Texts that nobody is shown.
UNSEEN = {
    "This is a test.",  # what is written to try a folder
    '<getProperties version="1.7"/>',
    '<getProperties version="1.7"',  # what an INDI server is asked
    "MaxIm DL",
    "MaxIm CCD",
    "Camera Control",  # titles of windows that are looked for
    "yyyy-MM-dd HH:mm:ss",
    "Vista",  # a name behind "OS:"
    "The settings have failed before",  # after the box that told of it
    "telescope link",  # what is looked for in a message
}

# Functions whose arguments are whole messages, and others whose arguments are shown as parts of one.
WHOLE = {"AddToLog", "log", "ShowPopupMessage", "popUp", "tell", "messageBox", "reportMissing"}
PARTS = {"numbered", "joinLines", "lines", "line"}
REFUSING = re.compile(".*([Ee]rror|refuse|damaged|fail|failFits|invalid_argument|out_of_range|GivenUp|emplace)")


def place_of(file):
    """None when no row is the file's."""
    told = next((heading for beginning, heading in PLACES if file.startswith(beginning)), None)
    return told or (REFUSALS if file.startswith(REFUSING_ROOMS) else None)


def is_silent(file):
    name = Path(file).name
    return name.startswith("frm_") or (name != "simulator_panel.cpp" and name.endswith(SILENT))


def is_prose(text):
    """Several words, or an exclamation."""
    return any(part.endswith("!") or re.search("[A-Za-z].* .*[A-Za-z]", part) for part in parts_of(text))


def is_refusal(text):
    return any(REFUSING.fullmatch(call) for call in text.calls)


def is_message(text):
    parts = parts_of(text.text)
    if not re.search("[A-Za-z]", "".join(parts)) or parts[0] in UNSEEN:
        return False
    if re.search(r"^\W*(Module )?(mod[A-Z]|mod |frm)|^… Sub ", text.text):  # where a reported failure happened
        return False
    if re.search(r"\\|^[^/]*\.[a-z]{3}$", text.text):  # a path or a file
        return False
    refuses = text.file.startswith(REFUSING_ROOMS) and not any(text.file.startswith(place) for place, _ in PLACES)
    if refuses:  # other texts there are names and values
        return is_refusal(text) and is_prose(text.text)
    return is_prose(text.text) or bool(text.calls and text.calls[-1] in WHOLE | PARTS)


@lru_cache
def sources():
    """By their names relative to the root."""
    files = [path for path in sorted((ROOT / "src").rglob("*")) if path.suffix in (".cpp", ".h")]
    return {path.relative_to(ROOT).as_posix(): path.read_text(encoding="utf-8") for path in files}


@lru_cache
def all_texts():
    """What the program's sources hold, silent ones left out."""
    return [text for file, source in sources().items() if place_of(file) and not is_silent(file)
            for text in texts_of(source, file)]


def find_words(text, part, start):
    """Where the part stands in the text as words of their own, from there on; -1 where it doesn't."""
    first = r"(?<![A-Za-z0-9])" if re.match("[A-Za-z0-9]", part) else ""
    last = r"(?![A-Za-z0-9])" if re.search("[A-Za-z0-9]$", part) else ""
    match = re.compile(first + re.escape(part) + last).search(text, start)
    return match.start() if match else -1


def tells_of(told, text):
    """The source's text is told alone where it is a message of its own, else among others: its parts stand in this one in
    their order."""
    if text.calls and text.calls[-1] in WHOLE:
        return parts_of(told) == parts_of(text.text)
    at = 0
    for part in parts_of(text.text):
        at = find_words(told, part, at)
        if at < 0:
            return False
        at += len(part)
    return True


def reference_tells_of_every_message():
    told = [" ".join(code.split()) for code in Document("docs/reference.md").codes]
    messages = [text for text in all_texts() if is_message(text)]
    for text in messages:
        expect(any(tells_of(code, text) for code in told),
               f"docs/reference.md, \"{place_of(text.file)}\": add a row (or add to one) for "
               f"`{' '.join(text.text.split())}` ({text.file}:{text.line}): the text between ` signs on the left, what it "
               "means on the right. If nobody is shown it, name it in UNSEEN of this script.")
    expect(len(messages) > 250, f"only {len(messages)} messages were seen")


def reference_knows_the_rooms_that_tell_the_operator():
    """A room has its place above as soon as what it says can reach the operator."""
    for file, source in sources().items():
        for text in [] if place_of(file) else texts_of(source, file):
            expect(not {"AddToLog", "ShowPopupMessage", "messageBox"} & set(text.calls),
                   f"{file}:{text.line} tells \"{text.text}\": add its room to PLACES of this script")


def reference_tells_of_no_message_that_the_program_does_not_have():
    # Also what is too short, or too odd, to be told of by itself.
    said = {part for text in all_texts() if is_message(text) or is_refusal(text) or set(text.calls) & (WHOLE | PARTS)
            for part in parts_of(text.text)}
    section = Document("docs/reference.md").prose.partition("\n## Messages\n")[2].partition("\n## ")[0]
    rows = [line for line in section.splitlines() if line.startswith("|")]
    messages = [message for row in rows for message in re.findall("`([^`]+)`", re.split(r"(?<!\\)\|", row)[1])]
    for message in messages:
        left = " ".join(message.replace(r"\|", "|").split())
        for part in sorted(said, key=len, reverse=True):
            while part in left and (at := find_words(left, part, 0)) >= 0:
                left = left[:at] + "|" + left[at + len(part):]
        expect(not re.search("[A-Za-z0-9]", left),
               f"docs/reference.md, \"Messages\": no source has `{message}`: take it out, or say it as the program does")
    expect(len(messages) > 200, f"only {len(messages)} messages were seen")


def main():
    for check in (links_lead_somewhere, every_picture_is_shown, pages_of_the_manual_link_to_pages_of_the_manual,
                  commands_can_be_given, paths_exist, sources_are_read_as_the_program_is_made,
                  reference_tells_of_every_message,
                  reference_knows_the_rooms_that_tell_the_operator,
                  reference_tells_of_no_message_that_the_program_does_not_have):
        check()
    print(*complaints, sep="\n")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
