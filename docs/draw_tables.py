"""Drawings of the tables and of the slots."""
from matplotlib.patches import Rectangle

from draw_common import BLUE, GREEN, GREY, INK, RED, SAND, TINT, blank, save, strip, core


def draw_tables():
    """NODES, ELEMENTS, PROPS, NODEOUT in memory."""
    ax = blank(8.6, 4.3, (-2.6, 18.6), (-0.6, 9.4))
    tables = [
        ("NODES", "NNODES x 2\n64-bit reals", BLUE,
         [("column 1: Y", ["Y 1", "Y 2", "...", "Y n"]), ("column 2: Z", ["Z 1", "Z 2", "...", "Z n"])]),
        ("ELEMENTS", "NELEMS x 4\n32-bit integers", GREEN,
         [(f"column {k}: node {k}", ["e 1", "e 2", "...", "e m"]) for k in (1, 2, 3, 4)]),
        ("PROPS", "NELEMS x 10\n64-bit reals", SAND,
         [("column 1: EMOD", ["e 1", "e 2", "...", "e m"]), ("column 2: GMOD", ["e 1", "e 2", "...", "e m"]),
          ("", ["..."]), ("column 10", ["e 1", "e 2", "...", "e m"])]),
        ("NODEOUT", "NNODES x 3\n64-bit reals", RED,
         [("column 1: twist", ["w 1", "w 2", "...", "w n"]), ("column 2: along u", ["w 1", "w 2", "...", "w n"]),
          ("column 3: along v", ["w 1", "w 2", "...", "w n"])]),
    ]
    for row, (name, shape, color, columns) in enumerate(tables):
        y = 7.6 - 2.5 * row
        ax.text(-2.6, y + 0.62, name, fontweight="bold", va="center")
        ax.text(-2.6, y - 0.05, shape, fontsize=7, va="center", color=GREY)
        x = 0.6
        for title, cells in columns:
            end = strip(ax, x, y, cells, 1.08, color=color)
            ax.text((x + end) / 2, y + 1.06, title, ha="center", fontsize=7.5, color=color)
            x = end + (0.12 if title else 0)
    ax.text(0.6, -0.55, "address rises to the right; n = NNODES, m = NELEMS; a column follows at once upon the one "
            "before it", fontsize=7.5, color=GREY)
    save("tables")


def draw_elemout():
    """The 48 reals of one element."""
    ax = blank(8.6, 2.9, (-1.1, 24.3), (-2.0, 5.0))
    for p in range(4):
        x = 6 * p + 0.1
        ax.text(x + 2.85, 4.55, f"corner {p + 1}", ha="center", fontweight="bold")
        ax.text(x + 2.85, 4.0, f"{12 * p} to {12 * p + 11}", ha="center", fontsize=7.5, color=GREY)
        ax.add_patch(Rectangle((x, 2.7), 3.75, 1, facecolor=TINT[BLUE], edgecolor=BLUE, linewidth=0.8))
        ax.add_patch(Rectangle((x + 3.75, 2.7), 1.95, 1, facecolor=TINT[RED], edgecolor=RED, linewidth=0.8))
        ax.text(x + 1.87, 3.2, "8 shear", ha="center", va="center", fontsize=8)
        ax.text(x + 4.72, 3.2, "4 axial", ha="center", va="center", fontsize=8)
    ax.plot([0.1, 0], [2.7, 1.5], color=GREY, linewidth=0.7, linestyle=":")
    ax.plot([5.8, 24], [2.7, 1.5], color=GREY, linewidth=0.7, linestyle=":")
    for k in range(12):
        color = BLUE if k < 8 else RED
        ax.add_patch(Rectangle((2 * k, 0.5), 2, 1, facecolor=TINT[color], edgecolor=color, linewidth=0.8))
        ax.text(2 * k + 1, 1.0, f"$\\tau_{'YZ'[k % 2]}$" if k < 8 else r"$\sigma$", ha="center", va="center")
        ax.text(2 * k + 1, 0.15, f"{k}", ha="center", va="center", fontsize=7.5, color=GREY)
    for q, load in enumerate(["torque 1", "force 1 along u", "force 1 along v", "warping shear 1"]):
        ax.text(4 * q + 2, -0.5, load, ha="center", va="center", fontsize=8, color=BLUE)
    for q, load in enumerate(["N = 1", "$M_u$ = 1", "$M_v$ = 1", "B = 1"]):
        ax.text(17 + 2 * q, -0.5, load, ha="center", va="center", fontsize=8, color=RED)
    ax.text(0, -1.7, "element e begins at 48 (e - 1), its corner p at 48 (e - 1) + 12 (p - 1); corner p is the "
            "element's p-th node;\na triangle's corner 4 repeats its corner 3", fontsize=7.5, color=GREY, va="center")
    save("elemout")


def draw_bar():
    """The 184 bytes of a bar, a row for every 48 of them."""
    fields = [(0, 4, "NODE", "in"), (4, 8, "not read", ""), (12, 4, "ELEMENT", "in"), (16, 4, "NELNODES", "out"),
              (20, 16, "ELNODES (4)", "out"), (36, 4, "gap", ""), (40, 8, "AREA", "in"), (48, 8, "EMODUL", "in"),
              (56, 8, "GMODUL", "in"), (64, 8, "RADIUS", "in"), (72, 24, "not read", ""), (96, 8, "BARWEIGHT", "in"),
              (104, 32, "SHAPE (4)", "out"), (136, 8, "RS: r", "out"), (144, 8, "RS: s", "out"),
              (152, 32, "STRESS (4)", "out")]
    assert sum(size for _, size, _, _ in fields) == 184
    ax = blank(8.6, 3.2, (-3.4, 48.4), (-1.3, 8.2))
    color = {"in": GREEN, "out": RED, "": GREY}
    for offset, size, name, way in fields:
        x, y = offset % 48, 6.2 - 2.1 * (offset // 48)
        ax.add_patch(Rectangle((x, y), size, 1.2, facecolor=TINT[color[way]], edgecolor=color[way], linewidth=0.8))
        ax.text(x + size / 2, y + 0.6, name, ha="center", va="center", fontsize=5.6 if size == 4 else 8)
        ax.text(x + 0.15, y + 1.45, f"{offset}", fontsize=6.5, color=GREY, ha="left", va="center")
    for row in range(4):
        ax.text(-0.6, 6.8 - 2.1 * row, f"{48 * row}", ha="right", va="center", fontsize=8, color=INK)
    for x, way, text in ((0, "in", "set by the host"), (14, "out", "filled by the library"), (30, "", "not touched")):
        ax.add_patch(Rectangle((x, -1.2), 1.6, 0.6, facecolor=TINT[color[way]], edgecolor=color[way], linewidth=0.8))
        ax.text(x + 2.2, -0.9, text, va="center", fontsize=8)
    save("bar")


def draw_slots():
    """The 58 slots, ten to a row, coloured by what they are about."""
    kinds = {"sums": (GREEN, "EA IYY IZZ DYZ YC ZC ALPHA I1 I2 ANET COUP1 COUP2 WEIGHT EREF GREF"),
             "warping analysis": (BLUE, "SCY SCZ SCU SCV GJ GAY GAZ IW GAU GAV GAUV IWS WT"),
             "skew coefficients": (SAND, "RZ RY RV RU WR1 WR2")}
    color = {name: tone for tone, names in kinds.values() for name in names.split()}
    ax = blank(8.6, 4.3, (-0.6, 10.1), (-0.8, 6.4))
    for k, name in enumerate(core.SLOTS):
        x, y = k % 10, 5.4 - k // 10
        tone = color.get(name, RED)
        ax.add_patch(Rectangle((x, y), 1, 0.9, facecolor=TINT[tone], edgecolor=tone, linewidth=0.8))
        ax.text(x + 0.5, y + 0.33, name.replace("_NEG", "\n_NEG"), ha="center", va="center",
                fontsize=8 if len(name) < 7 else 7, linespacing=0.95)
        ax.text(x + 0.05, y + 0.75, f"{k}", fontsize=7, color=GREY, va="center")
        if k == core.MODE_SLOT:
            ax.text(x + 0.95, y + 0.75, "in: mode", fontsize=6, color=INK, va="center", ha="right")
    x = 0
    for text, tone in [(name, tone) for name, (tone, _) in kinds.items()] + [("plastic", RED)]:
        ax.add_patch(Rectangle((x, -0.6), 0.25, 0.3, facecolor=TINT[tone], edgecolor=tone, linewidth=0.8))
        ax.text(x + 0.35, -0.45, text, va="center", fontsize=8)
        x += 2.2
    save("slots")
