"""Small breakages of a source file, and which of them are left out."""

import os
import re

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
NO_FAULTS = os.path.join(ROOT, "tests", "mutation", "no-faults.txt")
FLIPS = {"==": "!=", "!=": "==", "<=": ">", ">=": "<", "&&": "||", "||": "&&"}


def code_lines(text):
    """The lines that hold statements, with their numbers; comments, includes and declarations of names are left out, and
    memory that is taken beforehand: without it the program does the same, and the table of instructions tells."""
    for number, line in enumerate(text.split("\n")):
        stripped = line.strip()
        if not stripped or stripped.startswith(("//", "#", "namespace", "using", "}", "template", "static_assert")):
            continue
        if ".reserve(" in stripped:
            continue
        yield number, line


def breakages(text):
    """All small breakages of a file as (line number, kind, new line or lines)."""
    lines = text.split("\n")
    for number, line in code_lines(text):
        code = line.split("//")[0]
        for operator, flipped in FLIPS.items():
            for match in re.finditer(r"(?<![<>=!&|-])" + re.escape(operator) + r"(?![<>=&|])", code):
                yield number, f"{operator} to {flipped}", [line[: match.start()] + flipped + line[match.end():]]
        for match in re.finditer(r"(?<=[\w)\]] )([<>])(?= [\w(])", code):
            flipped = ">=" if match.group() == "<" else "<="
            yield number, f"{match.group()} to {flipped}", [line[: match.start()] + flipped + line[match.end():]]
        for match in re.finditer(r"\b(true|false)\b", code):
            flipped = "false" if match.group() == "true" else "true"
            yield number, f"{match.group()} to {flipped}", [line[: match.start()] + flipped + line[match.end():]]
        for match in re.finditer(r"(?<![\w.\"'])\d+u?(?![\w.\"'])", code):
            changed = str(int(match.group().rstrip("u")) + 1)
            yield number, f"{match.group()} to {changed}", [line[: match.start()] + changed + line[match.end():]]
        for match in re.finditer(r'"([^"\\\n]+)"', code):
            yield number, f"text {match.group()}", [line[: match.start()] + f'"{match.group(1)}x"' + line[match.end():]]
        if re.fullmatch(r"\s+[\w.>:*()-]+(\[\w+\])?(->|\.)?\w*\(.*\);", code.rstrip()) and "return" not in code:
            indent = code[: len(code) - len(code.lstrip())]
            yield number, "dropped", [indent + ";"]
        match = re.match(r"(\s+)(?:\} else )?if \((?!auto|const|IMedia|Audio)([^;=]+)\)( \{)?$", code)
        if match and code.count("(") == code.count(")"):
            start = code.index("if (") + 4
            yield number, "condition negated", [code[:start] + "!(" + match.group(2) + "))" + (match.group(3) or "")]
        following = lines[number + 1] if number + 1 < len(lines) else ""
        if is_call(line) and is_call(following) and line.strip() != following.strip():
            yield number, "swapped with the next", [following, line]


def is_call(line):
    return bool(re.fullmatch(r"\s{4,}[\w.>-]+\(.*\);", line)) and "return" not in line


def read_no_faults():
    """The breakages that are left out, as (file, kind, line)."""
    with open(NO_FAULTS, encoding="utf-8") as file:
        rows = [line.split(" | ") for line in file if line.strip() and not line.startswith("#")]
    return {tuple(row[:3]) for row in rows}
