#!/usr/bin/env python3
"""The values of an IPE 300 beside those that handbooks print for it:

    velquor calc "IPE 300" --units cm --json | examples/handbook.py

Dimensions are those of EN 10365; the values stand in the common tables of profiles. Of It and Iw these have approximate
formulas: thin walls, and for It a term for the fillets.
"""
import json
import sys

# key, what is printed, its unit, handbook's value, value of velquor in cm and kg/m -> that unit, note
HANDBOOK = (
    ("A", "A", "cm2", 53.81, 1, ""),
    ("mass", "m", "kg/m", 42.2, 1, ""),
    ("P_out", "AL", "m2/m", 1.160, 0.01, ""),
    ("Iy", "Iy", "cm4", 8356, 1, ""),
    ("Wel_y", "Wel,y", "cm3", 557.1, 1, ""),
    ("Wpl_y", "Wpl,y", "cm3", 628.4, 1, ""),
    ("i_y", "iy", "cm", 12.46, 1, ""),
    ("Iz", "Iz", "cm4", 603.8, 1, ""),
    ("Wel_z", "Wel,z", "cm3", 80.50, 1, ""),
    ("Wpl_z", "Wpl,z", "cm3", 125.2, 1, ""),
    ("i_z", "iz", "cm", 3.35, 1, ""),
    ("It", "It", "cm4", 20.12, 1, "handbook: approximate formula"),
    ("Iw", "Iw", "cm6", 125900, 1, "handbook: approximate formula"),
)

values = json.load(sys.stdin)["sections"][0]["values"]
print(f"{'':8}{'velquor':>12}{'±':>10} {'handbook':>10}  {'':6}{'difference':>12}")
for key, symbol, unit, handbook, factor, note in HANDBOOK:
    value, bound = (factor * values[key][k] for k in ("value", "bound"))
    print(f"{symbol:8}{value:12.7g}{bound:10.2g} {handbook:10g}  {unit:6}{value / handbook - 1:+12.2%}  {note}".rstrip())
