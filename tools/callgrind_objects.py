#!/usr/bin/env python3
"""Instructions per object file in a callgrind output file: each function's own cost (not what
it calls) summed by the shared object it lives in.

    callgrind_objects.py callgrind.out.123            # every object, largest first
    callgrind_objects.py callgrind.out.123 Ravelin    # the total of objects whose name holds it
"""
import re
import sys

_NAMED = re.compile(r"^\((\d+)\)(?: (.*))?$")


def own_cost_by_object(path):
    """Maps object name to its self cost (the first event, Ir) and also gives the total."""
    names = {}
    totals = {}
    current = None
    skip_next = False  # the line after calls= is the call's inclusive cost, not self cost
    with open(path, encoding="utf-8", errors="replace") as f:
        for line in f:
            if skip_next:
                skip_next = False
                continue
            head = line[:1]
            if head.isdigit() or head in "+-*":
                if current is None:
                    continue
                fields = line.split()
                if len(fields) >= 2:
                    totals[current] = totals.get(current, 0) + int(fields[1])
            elif line.startswith("ob="):
                current = _resolve(names, line[3:].strip())
            elif line.startswith("cob="):
                _resolve(names, line[4:].strip())
            elif line.startswith("calls="):
                skip_next = True
    return {names.get(k[1:-1], k) if k.startswith("(") else k: v for k, v in totals.items()}


def _resolve(names, spec):
    """Callgrind compresses names: "(7) /lib/x.so" defines id 7, a later "(7)" refers to it."""
    match = _NAMED.match(spec)
    if not match:
        return spec
    ident, name = match.groups()
    if name is not None:
        names[ident] = name
    return names.get(ident, spec)


def main(argv):
    if len(argv) < 2:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    totals = own_cost_by_object(argv[1])
    if len(argv) > 2:
        print(sum(v for k, v in totals.items() if argv[2] in k))
        return 0
    for name, cost in sorted(totals.items(), key=lambda kv: -kv[1]):
        print(f"{cost:>14,}  {name}")
    print(f"{sum(totals.values()):>14,}  (all)")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
