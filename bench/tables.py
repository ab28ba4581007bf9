"""The tables of docs/performance.md about single calls: python3 bench/tables.py BUILD PAGE [ROUNDS]. Some seven minutes.

BUILD is a release build with the benchmarks. bench_run goes ROUNDS times, 5 if not given, bench_solver once, which has
rounds of its own; each figure is the least and the largest of the rounds. The tables go into PAGE between their marks.
CHOLMOD takes the BLAS that the dynamic linker finds. Without perf the table of stages stays as it is.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

BENCH, PAGE = pathlib.Path(sys.argv[1]).resolve() / "bench", pathlib.Path(sys.argv[2])
ROUNDS = int(sys.argv[3]) if len(sys.argv) > 3 else 5
LARGEST = 300000  # nodes


def output(program, *arguments):
    return subprocess.run([BENCH / program, *map(str, arguments)], capture_output=True, text=True, check=True).stdout


def figure(x, digits=3):
    text = f"{x:.{digits}g}"
    return f"{float(text):.0f}" if "e" in text else text


def spread(values, form=figure):
    low, high = form(min(values)), form(max(values))
    return low if low == high else f"{low} to {high}"


def ratio(x):
    return f"{x:.2f}"


def table(head, rows):
    return "\n".join("| " + " | ".join(row) + " |" for row in [head, ["---"] * len(head), *rows]) + "\n"


def put(name, text):
    page, count = re.subn(rf"(<!-- {name}: begin -->\n).*?(<!-- {name}: end -->)", lambda m: m[1] + text + m[2],
                          PAGE.read_text(), flags=re.DOTALL)
    assert count == 1, name
    PAGE.write_text(page)
    print(text, flush=True)


def grouped(found):
    """Of the rows of all rounds, those with the same first two columns: the values of each other column, by round."""
    rows = {}
    for nodes, kind, *values in found:
        rows.setdefault((nodes, kind), []).append([float(v) for v in values])
    return {key: list(zip(*rounds)) for key, rounds in rows.items()}


def whole_call(text):
    calls = re.findall(r"^ +(\d+) (quadrilaterals|triangles) +(\d) +([\d.]+) +([\d.]+) +([\d.]+)", text, re.MULTILINE)
    by_mode = [grouped((n, kind, *values) for n, kind, mode, *values in calls if mode == wanted) for wanted in "01"]
    put("calls", table(
        ["Nodes", "Elements", "`VQ_ELASTIC`, ms", "of it in the solver, ms", "ratio", "`VQ_PLASTIC`, ms",
         "of it in the solver, ms", "ratio"],
        [[*key, *(spread(values, form) for mode in by_mode for values, form in zip(mode[key], (figure, figure, ratio)))]
         for key in by_mode[0]]))

    channel = grouped(re.findall(r"^ +(\d+) (equal|unequal) +([\d.]+) +([\d.]+) +([\d.]+)", text, re.MULTILINE))
    put("channel", table(["Nodes", "Strengths", "`VQ_ELASTIC`, ms", "`VQ_PLASTIC`, ms", "more, %"],
                         [[*key, spread(elastic), spread(plastic),
                           spread([100 * (p / e - 1) for e, p in zip(elastic, plastic)], lambda x: f"{x:.0f}")]
                          for key, (elastic, plastic, _) in channel.items()]))

    memory = grouped(re.findall(r"^peak memory at (\d+) nodes, (\w+): call (\d+) MB .* alone (\d+) MB, ratio ([\d.]+)", text,
                                re.MULTILINE))
    put("resident", table(["Nodes", "Elements", "Resident peak beyond the host's tables, MB", "Over that of the solver alone"],
                          [[key[0], f"{key[1]}, a square", spread(call), spread(over, ratio)] for key, (call, _, over) in memory.items()]))


def solver(text):
    rows = re.findall(r"^ +(\d+)  (\S.*?) +(natural|random) +" + " +".join([r"([\d.]+)"] * 6), text, re.MULTILINE)
    chosen = [row for row in rows if int(row[0]) > 100 and not re.search("8 : 1|bars", row[1])]
    put("solver", table(["Nodes", "Mesh", "Numbers", "Velquor, ms", "CHOLMOD, ms", "Ratio"],
                        [[*row[:3], *(spread([float(row[k]), float(row[k + 1])], form)
                                      for k, form in ((3, figure), (5, figure), (7, ratio)))] for row in chosen]))


STAGES = {  # by symbols, the first that has one
    "solver: sorting, ordering, shape of the factor":
        r"amd_|LDLT::(analyse|classify|order|ground|primary_columns|.*(minimum_degree|postorder))",
    "solver: factorisation": r"LDLT::(factorise|.*(eliminate|reduce|subtract_product))",
    "solver: solution and refinement": r"LDLT::|OD_PARDISO2|SPARSEMATRIX_FCN",
    "plastic searches": r"PLASTNO|takes_part",
    "structure, assembly, second pass":
        r"CREATESTRUCT|ADDSTIFF|FILLMATRIX|KANDRIGHTSIDE|field_load|VQ_SYSTEM_MOD::.*(border|add_element|pairs_of)",
    "shear centre, stresses, warping constants": r"VQ_SYSTEM_MOD|QUAD_MOD|TRIANGLE_MOD|SUPORTBASE|USEDLAPACK|skew_sum",
    "host's tables, mesh, checks, section values": r"BASICCHAR_MOD|VQ_DATA_MOD|vq_velquor",
    "memory: page faults of the system, clearing, copying": r"mem(move|set|cpy)|malloc|free|chunk|operator |\[k\]",
}


def stages():
    rounds = []
    with tempfile.NamedTemporaryFile() as data:
        for _ in range(3):
            subprocess.run(["perf", "record", "-o", data.name, BENCH / "bench_run", "30000"], capture_output=True, check=True)
            text = subprocess.run(["perf", "report", "-i", data.name, "--sort", "dso,symbol", "--stdio"], capture_output=True,
                                  text=True, check=True).stdout
            shares = dict.fromkeys(STAGES, 0.0)
            for share, symbol in re.findall(r"^ +([\d.]+)% +(.*)", text, re.MULTILINE):
                stage = next((stage for stage, pattern in STAGES.items() if re.search(pattern, symbol)), None)
                if stage:  # else the benchmark's own
                    shares[stage] += float(share)
            rounds.append(shares)
    put("stages", table(["Stage", "Share, %"], [[stage, spread([r[stage] for r in rounds], lambda x: f"{x:.0f}")]
                                                for stage in STAGES]))


if shutil.which("perf"):
    stages()
whole_call("".join(output("bench_run", LARGEST) for _ in range(ROUNDS)))
solver(output("bench_solver", LARGEST, 100))
