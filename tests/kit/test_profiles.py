"""The catalogue of rolled profiles: areas from its dimensions against the areas and masses that the tables print.

    test_profiles.py [folder of the project]

A printed figure stands for all that rounds to it: half a unit of its last digit is allowed everywhere; for a mass also
that of the area, which the tables multiply as printed. SLACK gives what some families need beyond that.
"""
import json
import sys
from decimal import Decimal
from math import atan, pi, tan
from pathlib import Path

root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parents[2]

# Share of the figure, and units of the last digit of a mass.
SLACK = {
    "IPN": (0.003, 0),  # tables of sloped flanges were calculated by hand: single figures are off by up to 0.3 %
    "UPN": (0.003, 0),
    "W": (0.005, 0),  # dimensions are printed with three digits, up to 0.5 % of a width; masses are whole pounds
    "C": (0.0015, 0),  # width and web are rounded to 0.001 in, up to 0.13 % of the area of the smallest
    "L American": (0, 0.5),  # masses are rounded up
}
MASS = {"mm": 0.785, "in": 3.4}  # of 1 cm2: 7850 kg/m3 in kg/m; of 1 in2: 490 lb/ft3 in lb/ft, rounded as the tables do


def corner(slope=0.0):
    """Area between the arc of radius 1 in a corner of 90 degrees + atan(slope) and the sides of the corner."""
    angle = pi / 2 + atan(slope)
    return 1 / tan(angle / 2) - (pi - angle) / 2


def flanged(d, outstands, tf_at):
    """I section (4 outstands) or channel (2); a sloped flange is tf thick at the distance tf_at from its edge."""
    slope, root_radius, toe_radius = d.get("slope", 0), d.get("r1", d.get("r")), d.get("r2", 0)
    outstand = (d["b"] - d["tw"]) * 2 / outstands
    at = tf_at["share"] * {"b": d["b"], "b - tw": d["b"] - d["tw"]}[tf_at["of"]] if tf_at else 0
    edge, inner = d["tf"] - slope * at, d["tf"] + slope * (outstand - at)
    possible = edge > toe_radius and 2 * (inner + root_radius) < d["h"] and outstand > root_radius + toe_radius
    fillets = corner(slope) * (root_radius**2 - toe_radius**2)
    return d["h"] * d["tw"] + outstands * (outstand * (edge + inner) / 2 + fillets), possible


def area(shape, d, tf_at):
    """Area, and whether a section of this shape can have these dimensions."""
    if shape in ("i", "i_sloped", "channel", "channel_sloped"):
        return flanged(d, 4 if shape[0] == "i" else 2, tf_at)
    if shape == "angle":
        possible = d["h"] >= d["b"] > d["t"] + d["r1"] + d["r2"] and d["t"] > d["r2"]
        return d["t"] * (d["h"] + d["b"] - d["t"]) + corner() * (d["r1"] ** 2 - 2 * d["r2"] ** 2), possible
    if shape == "hollow_rectangle":
        h, b = d["h"] - 2 * d["t"], d["b"] - 2 * d["t"]
        possible = d["h"] >= d["b"] > 2 * d["ro"] and b > 2 * d["ri"] and d["ro"] >= d["ri"]
        return d["h"] * d["b"] - h * b - 4 * corner() * (d["ro"] ** 2 - d["ri"] ** 2), possible
    assert shape == "ring", f"unknown shape {shape}"
    return pi * d["t"] * (d["d"] - d["t"]), d["d"] > 2 * d["t"]


def unique(pairs):
    keys = [k for k, _ in pairs]
    assert len(set(keys)) == len(keys), f"twice: {[k for k in keys if keys.count(k) > 1]}"
    return dict(pairs)


catalogue = json.loads((root / "kit/section/profiles.json").read_text(), object_pairs_hook=unique)["families"]
printed = json.loads((root / "tests/kit/profile_values.json").read_text(), object_pairs_hook=unique,
                     parse_float=Decimal, parse_int=Decimal)["families"]  # Decimal keeps the zeros that end a figure
assert [f["name"] for f in catalogue] == [f["name"] for f in printed], "the families of the two files differ"
unique([(name, 0) for family in catalogue for name in family["profiles"]])
faults = []
for family, table in zip(catalogue, printed):
    worst = [(0, ""), (0, "")]
    for profile in sorted(family["profiles"].keys() ^ table["profiles"].keys()):
        faults.append(f"{profile}: in one file only")
    for profile in family["profiles"].keys() & table["profiles"].keys():
        d = dict(zip(family["columns"], family["profiles"][profile], strict=True))
        A, possible = area(family["shape"], d, family.get("tf_at"))
        if not possible or any(v < 0 or v == 0 and k[0] != "r" for k, v in d.items()):
            faults.append(f"{profile}: impossible dimensions {d}")
        A /= 100 if family["unit"] == "mm" else 1
        for k, ours in enumerate((A, A * MASS[family["unit"]])):
            figure = table["profiles"][profile][k]
            off = abs(ours - float(figure))
            share, units = SLACK.get(family["name"], (0, 0))
            digit = [10.0 ** f.as_tuple().exponent for f in table["profiles"][profile]]
            allowed = digit[0] / 2 if k == 0 else digit[1] * (0.5 + units) + MASS[family["unit"]] * digit[0] / 2
            worst[k] = max(worst[k], (off / float(figure), profile))
            if off > allowed + share * float(figure) + 1e-9:
                faults.append(f"{profile}: {('area', 'mass')[k]} {ours:.5g}, the table prints {figure}")
    print(f"{family['name']:14} {len(family['profiles']):4} profiles, largest difference of area"
          f" {worst[0][0]:.2%} ({worst[0][1]}), of mass {worst[1][0]:.2%} ({worst[1][1]})")
print(f"{sum(len(f['profiles']) for f in catalogue)} profiles, {len(faults)} faults", *sorted(faults), sep="\n")
sys.exit(bool(faults))
