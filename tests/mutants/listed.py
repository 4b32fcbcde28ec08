"""The committed list of mutants that may live, each with its reason.

An entry is four lines and a blank one; a reason can take more lines:

    src/common/text.cpp: HexDigitValue
    - the lines as they are, in one
    + the lines with the change
    why no test can tell the difference
"""

from pathlib import Path

Key = tuple[str, str, str, str]


def read_list(path: Path) -> dict[Key, str]:
    entries: dict[Key, str] = {}
    lines = [line for line in path.read_text().splitlines() if not line.startswith("#")]
    for block in "\n".join(lines).split("\n\n"):
        parts = block.strip().split("\n")
        if parts == [""]:
            continue
        place, separator, function = parts[0].partition(": ")
        if len(parts) < 4 or not separator or parts[1][:2] != "- " or parts[2][:1] != "+":
            raise ValueError(f"{path}: this is no entry:\n{block}")
        entries[place, function, parts[1][2:], parts[2][2:]] = " ".join(parts[3:])
    return entries


def show(key: Key) -> str:
    return f"{key[0]}: {key[1]}\n- {key[2]}\n+ {key[3]}"
