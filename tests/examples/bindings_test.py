"""What the examples declare of the library, held to its header and its list of exports."""
import importlib.util
import re
import unittest

import readme

EXAMPLES = readme.TOP / "examples"
LANGUAGES = {"C": "c", "C++": "cpp", "C by ordinal": "c-ordinal", "Python": "python", "C#": "csharp",
             "Free Pascal": "pascal", "Visual Basic": "vb"}


def exports():
    """Name -> (ordinal, number of arguments): each takes four bytes of the stack."""
    text = (readme.TOP / "src/api/exports.def").read_text()
    return {name: (int(ordinal), int(size) // 4)
            for name, size, ordinal in re.findall(r"^  (\w+)@(\d+) @(\d+) NONAME$", text, re.M)}


def kind_of_c(words):
    """What a type of the header is to a binding: text, flag, signed, unsigned, object or nothing."""
    kinds = {"const char*": "text", "KestBool": "flag", "int32_t": "signed", "uint32_t": "unsigned", "void": "nothing"}
    return kinds.get(words, "object")


def header():
    """Name -> (ordinal, kind of the result, kinds of the arguments)."""
    text = (readme.TOP / "include/kestapi.h").read_text()
    functions = {}
    for result, name, arguments in re.findall(r"^KEST_API (.+?) KEST_CALL (\w+)\((.*?)\);", text, re.M | re.S):
        types = [re.sub(r"\s*\w+$", "", one.strip()) for one in arguments.split(",") if one.strip() != "void"]
        functions[name] = (exports()[name][0], kind_of_c(result), [kind_of_c(one) for one in types])
    return functions


def python_binding():
    spec = importlib.util.spec_from_file_location("kestapi", EXAMPLES / "python/kestapi.py")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    kinds = {module._object: "object", module._text: "text", module._bool: "flag", module._signed: "signed",
             module._unsigned: "unsigned", None: "nothing"}
    return {name: (ordinal, kinds[result], [kinds[one] for one in arguments])
            for name, (ordinal, result, arguments) in module.FUNCTIONS.items()}


def csharp_binding():
    """A text that is answered is an IntPtr here, as the runtime would free a string."""
    text = (EXAMPLES / "csharp/Kestapi.cs").read_text()
    by_ordinal, by_name = re.search(r"#if KEST_ORDINALS(.*?)#else(.*?)#endif", text, re.S).groups()
    ordinals = {name: int(number) for name, number in re.findall(r'string (\w+)Entry = "#(\d+)";', by_ordinal)}
    names = dict(re.findall(r'string (\w+)Entry = "(Kest\w+)";', by_name))
    kinds = {"IntPtr": "object", "string": "text", "byte": "flag", "int": "signed", "uint": "unsigned", "void": "nothing"}
    functions = {}
    for entry, result, name, arguments in re.findall(
            r"EntryPoint = (\w+)Entry, .*?\]\s+public static extern (\w+) (\w+)\((.*?)\);", text):
        if names[entry] != name:
            raise ValueError(f"{name} has the entry of {names[entry]}")
        types = [kinds[one.split()[0]] for one in arguments.split(", ") if one]
        functions[name] = (ordinals[entry], "object or text" if result == "IntPtr" else kinds[result], types)
    return functions


def pascal_binding():
    text = (EXAMPLES / "pascal/kestapi.pas").read_text()
    kinds = {"Pointer": "object", "PAnsiChar": "text", "Byte": "flag", "LongInt": "signed", "LongWord": "unsigned",
             "": "nothing"}
    functions = {}
    for name, arguments, result, ordinal, entry in re.findall(
            r"^(?:function|procedure) (\w+)(?:\((.*?)\))?(?:: (\w+))?; KestCall;\s+external KestLibrary "
            r"\{\$ifdef windows\}index (\d+)\{\$else\}name '(\w+)'\{\$endif\};$", text, re.M):
        if entry != name:
            raise ValueError(f"{name} has the entry {entry}")
        functions[name] = (int(ordinal), kinds[result], [kinds[one.split(": ")[1]] for one in arguments.split("; ") if one])
    return functions


def basic_binding():
    """Visual Basic has no kind for an object, a text that is answered or an unsigned number: each is a Long."""
    text = (EXAMPLES / "vb/Kestapi.bas").read_text().replace(" _\n", "")
    functions = {}
    for word, name, ordinal, arguments, result in re.findall(
            r'^Public Declare (Sub|Function) (Kest\w+) Lib "KESTAPI\.DLL" Alias "#(\d+)"\s+\((.*?)\)(?: As (\w+))?$', text, re.M):
        if (word == "Function") != bool(result):
            raise ValueError(f"{name} is a {word}")
        types = [re.fullmatch(r"ByVal \w+ As (\w+)", one).group(1) for one in arguments.split(", ") if one]
        functions[name] = (int(ordinal), result or "nothing", types)
    return functions


class Bindings(unittest.TestCase):
    def test_the_header_is_read_whole(self):
        self.assertEqual(exports(), {name: (ordinal, len(arguments)) for name, (ordinal, _, arguments) in header().items()})

    def test_every_function_is_declared_with_its_ordinal_and_its_kinds(self):
        for read in (python_binding, pascal_binding):
            with self.subTest(read.__name__):
                self.assertEqual(header(), read())

    def test_every_function_is_declared_for_csharp(self):
        result = {"object": "object or text", "text": "object or text"}
        self.assertEqual({name: (ordinal, result.get(kind, kind), arguments)
                          for name, (ordinal, kind, arguments) in header().items()}, csharp_binding())

    def test_every_function_is_declared_for_visual_basic(self):
        result = {"object": "Long", "text": "Long", "flag": "Byte", "signed": "Long", "unsigned": "Long", "nothing": "nothing"}
        argument = {**result, "text": "String"}
        self.assertEqual({name: (ordinal, result[kind], [argument[one] for one in kinds])
                          for name, (ordinal, kind, kinds) in header().items()}, basic_binding())

    def test_the_error_codes_are_the_headers(self):
        code = re.search(r"#define KEST_ERROR_EXCHANGE (\d+)", (readme.TOP / "include/kestapi.h").read_text()).group(1)
        for file, line in (("python/kestapi.py", "ERROR_EXCHANGE = {}"), ("csharp/Kestapi.cs", "ErrorExchange = {};"),
                           ("pascal/kestapi.pas", "KestErrorExchange = {};"),
                           ("vb/Kestapi.bas", "KEST_ERROR_EXCHANGE As Long = {}")):
            self.assertIn(line.format(code) + "\n", (EXAMPLES / file).read_text())


class Readme(unittest.TestCase):
    def test_every_language_has_its_section_and_its_folder(self):
        text = (EXAMPLES / "README.md").read_text()
        for title, folder in LANGUAGES.items():
            self.assertIn(f"\n## {title}\n", text)
            self.assertTrue((EXAMPLES / folder).is_dir(), folder)

    def test_every_section_with_commands_is_run(self):
        run = (readme.TOP / "tests/examples/CMakeLists.txt").read_text()
        for title in set(readme.sections()) - {readme.PREPARATION}:
            self.assertIn(title, LANGUAGES)
            self.assertIn(f'"{title}")\n', run)

    def test_every_file_that_is_linked_is_there(self):
        for path in re.findall(r"\]\((.+?)\)", (EXAMPLES / "README.md").read_text()):
            self.assertTrue((EXAMPLES / path).is_file(), path)


if __name__ == "__main__":
    unittest.main()
