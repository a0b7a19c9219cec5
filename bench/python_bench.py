#!/usr/bin/env python3
"""Times the evidence scenarios of inference_bench through the Python package.

    python_bench.py NET_FILE [SCENARIOS] [--c-bench PATH_TO_inference_bench]

A scenario draws one complete joint sample by forward sampling (the same xorshift generator and
seed as inference_bench, so the scenarios are the same), enters hard findings for a random 10%
of the nodes (at least one), reads every node's beliefs, and retracts; its time excludes the
sampling.  With --c-bench the C program is run on the same net and Python's overhead per
scenario is printed.  When pgmpy is importable, its variable elimination runs the same
scenarios for comparison.
"""
import argparse
import re
import subprocess
import time

import ravelo

MASK = (1 << 64) - 1


class XorShift:
    """The generator of inference_bench, step for step."""

    def __init__(self):
        self.state = 0x9E3779B97F4A7C15

    def uniform(self):
        s = self.state
        s ^= (s << 13) & MASK
        s ^= s >> 7
        s ^= (s << 17) & MASK
        self.state = s
        return (s >> 11) * (1.0 / 9007199254740992.0)


def topological(nodes):
    order, placed = [], set()
    while len(order) < len(nodes):
        for node in nodes:
            if node.name not in placed and all(p.name in placed for p in node.parents):
                placed.add(node.name)
                order.append(node)
    return order


def scenarios(net, count, rng):
    """Yields (observed node indices, their states) as inference_bench draws them."""
    nodes = net.nodes
    index = {n.name: i for i, n in enumerate(nodes)}
    order = topological(nodes)
    tables = {n.name: n.cpt.astype("float32") for n in nodes}
    parents = {n.name: [index[p.name] for p in n.parents] for n in nodes}
    observed = max(1, len(nodes) // 10)
    for _ in range(count):
        sample = [0] * len(nodes)
        for node in order:
            row = tables[node.name][tuple(sample[i] for i in parents[node.name])]
            u, acc, state = rng.uniform(), 0.0, len(row) - 1
            for s, p in enumerate(row):
                acc += float(p)
                if u < acc:
                    state = s
                    break
            sample[index[node.name]] = state
        chosen = list(range(len(nodes)))
        for i in range(observed):
            j = i + int(rng.uniform() * (len(nodes) - i))
            chosen[i], chosen[j] = chosen[j], chosen[i]
        yield chosen[:observed], [sample[i] for i in chosen[:observed]]


def time_ravelo(path, count, whole_net_reads):
    net = ravelo.read(path)
    net.auto_update = False
    net.compile()
    nodes = net.nodes
    total, checksum = 0.0, 0.0
    for chosen, states in scenarios(net, count, XorShift()):
        start = time.perf_counter()
        for i, s in zip(chosen, states):
            nodes[i].finding = s
        if whole_net_reads:
            checksum += sum(b[0] for b in net.beliefs(as_frame=False).values())
        else:
            for node in nodes:
                checksum += node.beliefs[0]
        net.retract()
        total += time.perf_counter() - start
    return total / count * 1e3, checksum


def time_pgmpy(path, count):
    try:
        from pgmpy.inference import VariableElimination
        from pgmpy.readwrite import BIFReader
    except ImportError:
        return None
    net = ravelo.read(path)
    model = BIFReader(string=net.dumps("bif")).get_model()
    inference = VariableElimination(model)
    names = [n.name for n in net.nodes]
    states = {n.name: n.states for n in net.nodes}
    total = 0.0
    for chosen, found in scenarios(net, count, XorShift()):
        evidence = {names[i]: states[names[i]][s] for i, s in zip(chosen, found)}
        start = time.perf_counter()
        for name in names:
            if name not in evidence:
                inference.query([name], evidence=evidence, show_progress=False)
        total += time.perf_counter() - start
    return total / count * 1e3


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("net")
    parser.add_argument("scenarios", type=int, nargs="?", default=200)
    parser.add_argument("--c-bench", help="the inference_bench program, to compare with")
    parser.add_argument("--repeats", type=int, default=3,
                        help="runs of each program; the fastest counts, as on a shared machine the "
                             "slower ones measure other work")
    args = parser.parse_args()

    runs = [time_ravelo(args.net, args.scenarios, whole_net_reads=False) for _ in range(args.repeats)]
    per_node, checksum = min(runs)
    whole = min(time_ravelo(args.net, args.scenarios, whole_net_reads=True)[0] for _ in range(args.repeats))
    print(f"{args.net}: {args.scenarios} scenarios, Python {per_node:.4f} ms each reading node.beliefs, "
          f"{whole:.4f} ms reading net.beliefs(as_frame=False) (checksum {checksum:.6f})")
    if args.c_bench:
        outs = [subprocess.run([args.c_bench, args.net, str(args.scenarios)], capture_output=True,
                               text=True, check=True).stdout for _ in range(args.repeats)]
        c_ms = min(float(re.search(r"scenarios ([0-9.]+) ms each", out).group(1)) for out in outs)
        c_sum = float(re.search(r"checksum ([-0-9.]+)", outs[0]).group(1))
        print(f"C {c_ms:.4f} ms each (checksum {c_sum:.6f}); Python's overhead "
              f"{(per_node - c_ms) * 1e3:.1f} us per scenario")
    pgmpy_ms = time_pgmpy(args.net, min(args.scenarios, 20))
    if pgmpy_ms is not None:
        print(f"pgmpy variable elimination {pgmpy_ms:.4f} ms each (every unobserved node queried)")


if __name__ == "__main__":
    main()
