#!/usr/bin/python3
"""Finds temporaries inside co_await expressions that GCC before 13 destroys twice.

A temporary lambda with captures, or a temporary aggregate written with braces, loses what it holds once too
often when it stands in the full expression of a co_await. Such things get a name first and are moved in. The
check reads the sources as text: each statement from `co_await` to its semicolon.

    coroutine_temporaries_test.py FOLDER ...
"""
import pathlib
import re
import sys

LAMBDA = re.compile(r"[(,=]\s*\[[^\]\s]")
BRACES = re.compile(r"(?:\b[A-Z]\w*|[(,])\s*\{[^}]")
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"", re.DOTALL)


def statements(text):
    """Each co_await with what follows to the end of its statement, and its line."""
    text = COMMENT.sub(lambda found: re.sub(r"[^\n]", " ", found.group()), text)
    for found in re.finditer(r"(?<!operator )\bco_await\b", text):
        depth = 0
        end = found.end()
        while end < len(text):
            character = text[end]
            if character in "([{":
                depth += 1
            elif character in ")]}":
                depth -= 1
            if depth < 0 or (depth == 0 and character == ";"):
                break
            end += 1
        yield text.count("\n", 0, found.start()) + 1, text[found.start():end]


def offences(folders):
    """Lines that the compiler would get wrong."""
    for folder in folders:
        for path in sorted(pathlib.Path(folder).rglob("*")):
            if path.suffix not in (".cpp", ".h"):
                continue
            for line, statement in statements(path.read_text(encoding="utf-8")):
                if LAMBDA.search(statement) or BRACES.search(statement):
                    yield f"{path}:{line}: {' '.join(statement.split())[:100]}"


def main():
    # The check must be able to fail.
    bad = ["co_await run([x] { return x; });", "co_await go(Point{1, 2});", "co_await go({1, name});"]
    good = ["co_await run(std::move(work));", "if (co_await ready()) { x = {1}; }", "co_await run([] { g(); });"]
    for text, expected in [(text, True) for text in bad] + [(text, False) for text in good]:
        found = any(LAMBDA.search(s) or BRACES.search(s) for _, s in statements(text))
        if found != expected:
            sys.exit(f"the check itself is wrong about: {text}")
    found = list(offences(sys.argv[1:]))
    for offence in found:
        print(offence)
    print(f"{0 if found else 1} passed, {1 if found else 0} failed")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
