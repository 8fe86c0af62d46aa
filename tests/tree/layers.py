#!/usr/bin/python3
"""Guards the layering: modules depend downwards only, without cycles, and include only
what they say they depend on; the drawing in docs/architecture.md is the graph's.

    layers.py --check SOURCE TARGETS    exit status 1 and a line a fault
    layers.py --draw SOURCE TARGETS     prints the drawing
    layers.py --write SOURCE TARGETS    puts it into docs/architecture.md
"""

import pathlib
import re
import sys

BEGIN = "<!-- module graph: written by tests/tree/layers.py --write -->"
END = "<!-- end of module graph -->"


class Module:
    def __init__(self, line):
        target, folder, sources, edges = (part.strip() for part in line.split("|"))
        self.target = target
        self.layer, self.name = target.split("_", 1)
        self.folder = pathlib.PurePath(folder)
        self.sources = sources.split()
        self.edges = [edge for edge in edges.split() if "::" not in edge]


def read_modules(targets):
    lines = pathlib.Path(targets).read_text().splitlines()
    return {module.target: module for module in map(Module, lines)}


def reachable(modules, target, seen=None):
    seen = set() if seen is None else seen
    for edge in modules[target].edges:
        if edge not in seen:
            seen.add(edge)
            reachable(modules, edge, seen)
    return seen


def edge_faults(modules):
    for module in modules.values():
        for edge in module.edges:
            if edge not in modules:
                yield f"{module.target} depends on {edge}, which is no module"
            elif modules[edge].layer != module.layer:
                yield f"{module.target} depends on {edge} of another layer by its inside"
    if not any(True for m in modules.values() for e in m.edges if e not in modules):
        for target in modules:
            if target in reachable(modules, target):
                yield f"{target} depends on itself through {sorted(reachable(modules, target))}"


def include_faults(source, modules):
    """Private headers, "log/sinks.h", belong to modules of their folder. What stands in base
    has nothing in common but that others share it: there a header belongs to the module with
    the source of its name, and one without a source, "base/singleton.h", to nobody."""
    folders, base = {}, {}
    for module in modules.values():
        if module.folder.name == "base":
            for name in module.sources:
                header = f"base/{pathlib.PurePath(name).stem}.h"
                base.setdefault((module.layer, header), set()).add(module.target)
        else:
            folders.setdefault((module.layer, module.folder.name), set()).add(module.target)
    for module in modules.values():
        allowed = {module.target} | reachable(modules, module.target)
        for name in module.sources:
            path = source / module.folder / name
            for included in re.findall(r'^#include "([^"]+)"', path.read_text(), re.M):
                head = included.split("/")[0]
                owners = (base.get((module.layer, included)) if head == "base"
                          else folders.get((module.layer, head)))
                if head == "frameutil" and module.layer == "kelp":
                    yield f"{path}: includes {included} of the layer above"
                elif head not in ("frameutil", "kelp") and owners and not owners & allowed:
                    yield f"{path}: includes {included} without depending on {sorted(owners)}"


def draw(modules):
    lines = ["```", "libframeutil"]
    for layer in ("frameutil", "kelp"):
        if layer == "kelp":
            lines += ["      │", "      ▼", "libkelp"]
        rows = sorted((m for m in modules.values() if m.layer == layer),
                      key=lambda m: (-len(reachable(modules, m.target)), m.name))
        width = max(len(m.name) for m in rows)
        for module in rows:
            edges = ", ".join(sorted(edge.split("_", 1)[1] for edge in module.edges))
            lines.append(f"  {module.name:<{width}}{' -> ' + edges if edges else ''}")
    return "\n".join(lines + ["```"])


def main():
    mode, source, targets = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3]
    modules = read_modules(targets)
    drawing = f"{BEGIN}\n{draw(modules)}\n{END}"
    page = source / "docs/architecture.md"
    if mode == "--draw":
        print(drawing)
        return 0
    text = page.read_text()
    if mode == "--write":
        pattern = re.compile(re.escape(BEGIN) + ".*?" + re.escape(END), re.S)
        page.write_text(pattern.sub(lambda _: drawing, text))
        return 0
    faults = list(edge_faults(modules)) + list(include_faults(source, modules))
    if drawing not in text:
        faults.append(f"{page}: the module graph is not the build's; run layers.py --write")
    print("\n".join(faults) or f"{len(modules)} modules in order")
    return 1 if faults else 0


sys.exit(main())
