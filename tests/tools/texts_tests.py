"""The messages of the programs as the sources have them, and their texts in the string bundles."""

import ast
import pathlib
import re
import unittest

TOOLS = pathlib.Path(__file__).parents[2] / "tools"
TEXTS = pathlib.Path(__file__).parents[2] / "components/bundles/texts"
LITERAL = r'"(?:[^"\\]|\\.)*"'
MESSAGE = re.compile(rf'Message\s+\w*\s*\{{\s*u"([\w.-]+)",\s*((?:{LITERAL}\s*)+)\}}')
OPTION = re.compile(rf'\{{\s*\.name\s*=\s*(\w+|{LITERAL})[^{{}}]*?\.help\s*=\s*((?:{LITERAL}\s*)+)[,}}]')


def text_of(literals):
    return "".join(ast.literal_eval(literal) for literal in re.findall(LITERAL, literals))


def messages():
    """The English texts in the sources by their keys."""
    found = {}
    for path in sorted(path for path in TOOLS.rglob("*") if path.suffix in (".h", ".cpp")):
        source = path.read_text(encoding="utf-8")
        names = dict(re.findall(rf"const (?:char\* (?:const )?|std::string_view )(\w+) ?(?:=|\{{) ?({LITERAL})", source))
        rows = [(key, text_of(text)) for key, text in MESSAGE.findall(source)]
        program = "tools" if path.parent.name == "common" else path.relative_to(TOOLS).parts[0]
        for name, text in OPTION.findall(source):
            rows.append((f"{program}.help.{text_of(names.get(name, name))}", text_of(text)))
        for key, text in rows:
            assert found.setdefault(key, text) == text, key
    return found


def bundle(name):
    lines = (TEXTS / f"tools.{name}.txt").read_text(encoding="utf-8").splitlines()
    rows = [line.split(" = ", 1) for line in lines if line and not line.startswith("#")]
    texts = {key: re.sub(r"\\(.)", lambda escaped: {"n": "\n", "t": "\t"}.get(escaped[1], escaped[1]), text) for key, text in rows}
    assert len(texts) == len(rows), name
    return texts


class Texts(unittest.TestCase):
    maxDiff = None

    def test_of_the_bundle_in_english_are_those_of_the_sources(self):
        told = {key: text for key, text in bundle("en_US").items() if key.startswith(("tools.", "vx"))}
        self.assertEqual(told, messages())

    def test_fit_into_a_terminal_in_each_language(self):
        for name in ["en_US", "de", "fr"]:
            for key, text in bundle(name).items():
                if re.fullmatch(r"vx\w+\.help(\.more)?", key):
                    for line in text.split("\n"):
                        self.assertLessEqual(len(line), 80, (name, key, line))


if __name__ == "__main__":
    unittest.main()
