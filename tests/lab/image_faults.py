"""Lets tavrenix-lab --check judge images: each of images.txt, and some at the limits. Prints what is not as expected."""

import json
import pathlib
import subprocess

CLASSES = {"entry": "C", "unit": "KsSCSIMultipathedLogicalUnit", "path": "KsSCSIHierarchicalLogicalUnit",
           "medium": "KsMedia"}


def image_of(form, text):
    if form in CLASSES:
        return image_of("entries", f'{{"id": 1, "class": "{CLASSES[form]}", {text}}}')
    if form == "property":
        return image_of("entry", f'"properties": {{"P": {text}}}')
    if form == "classes":
        return f'{{"generation": 1, "entries": [], "classes":\n{text}}}'
    return text if form == "image" else f'{{"generation": 1, "entries": [\n{text}\n]}}'


def expect(form, text, beginning, end=""):
    """The JSON library says the rest of a fault that ends with a colon."""
    pathlib.Path("judged.json").write_text(image_of(form, text))
    judged = subprocess.run(["tavrenix-lab", "--check", "judged.json"], capture_output=True, text=True)
    said = judged.stderr.removeprefix("tavrenix-lab: judged.json: ").removeprefix("warning: ").removesuffix("\n")
    isWhole = not end and not beginning.endswith(": ")
    isExpected = said == beginning if isWhole else said.startswith(beginning) and said.endswith(end)
    if not isExpected or bool(judged.returncode) != bool(said) or len(said) > 250 * len(said.splitlines()):
        print(f"{form} {text:.200}\n  should give {beginning}\n  and gives {said:.1000}\n  status {judged.returncode}")


for line in pathlib.Path(__file__).with_name("images.txt").read_text().splitlines():
    if not line.startswith("#"):
        given, fault = line.split(" => ")
        if fault.startswith("."):
            fault = "line 2: entries[0]" + fault.replace(": ", " (id 1): ", 1)
        expect(*given.split(" ", 1), fault.removeprefix("nothing"))
# The document, "entries", the entry and "properties" are four levels.
expect("property", "[" * 60 + "]" * 60, "")
expect("property", "[" * 61 + "]" * 61, "line 2: ", "[0] (id 1): the nesting is deeper than 64")
chain = json.dumps({f"C{i}": f"C{i - 1}" for i in range(1, 66)})
expect("classes", chain, "line 2: classes.C65: the class has more than 64 classes above it")
expect("image", '["' + "x" * 99998 + "\x1b", "line 1, column 100001: ")
expect("entries", "{}\n\0", "line 3, column 1: JSON holds no zero bytes")
deep = [f'{{"id": {i}, "class": "C", "parents": {[i - 1] if i else []}, "disk": {{}}}}' for i in range(30000)]
expect("entries", ",\n".join(deep), "line 2: entries[0].class (id 0): ", ": and 29980 more of this sort")
