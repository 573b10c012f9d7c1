"""Reads judged.txt: why mutants that nothing notices are as good as the original, or why they stay unnoticed.

Each judgement is one or more lines with the keys of mutants (file | function | line | change), then one indented line
that begins "equivalent: " or "unnoticed: ". Lines that begin with "#" and empty lines mean nothing.
"""


def read(path):
    judged, keys = {}, []
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        if not line.startswith(" "):
            keys.append(line)
            continue
        verdict, colon, reason = line.strip().partition(": ")
        if verdict not in ("equivalent", "unnoticed") or not reason or not keys:
            raise ValueError(f"{path.name}:{number}: neither a mutant nor a judgement of one")
        for key in keys:
            if key in judged:
                raise ValueError(f"{path.name}:{number}: judged twice: {key}")
            judged[key] = (verdict, reason)
        keys = []
    if keys:
        raise ValueError(f"{path.name}: no judgement at the end")
    return judged
