"""Draws the pictures of docs/ from results of the library. The same bytes on every run.

    draw.py <library> <folder for the drawings>
"""
import matplotlib.pyplot as plt
import numpy as np
from matplotlib.patches import Arc, Polygon, Rectangle
from matplotlib.tri import Triangulation

from draw_common import (ANGLE_OUTLINE, BLUE, FOLDER, GREEN, GREY, INK, RED, SAND, TINT, angle, arrow, calculate,
                         colours, draw_mesh, fill, grid, outline, save, section_axes, shear_stress, turn)
from draw_tables import draw_bar, draw_elemout, draw_slots, draw_tables


def draw_mesh_numbers():
    """The mesh of the first call, and its corner with numbers."""
    nodes, elements = angle(5)
    figure, (left, right) = plt.subplots(1, 2, figsize=(8.6, 4.2), gridspec_kw={"width_ratios": [1, 1.45]})
    draw_mesh(left, nodes, elements)
    section_axes(left, nodes, f"{len(nodes)} nodes, {len(elements)} elements")
    left.add_patch(Rectangle((-2, -2), 24, 24, fill=False, edgecolor=RED, linewidth=1))
    draw_mesh(right, nodes, elements, 1)
    for n, (y, z) in enumerate(nodes, 1):
        if y < 21 and z < 21:
            right.plot(y, z, "o", color=INK, markersize=3)
            right.text(y + 0.25, z + 0.3, f"{n}", fontsize=8)
    for e, element in enumerate(elements, 1):
        y, z = nodes[element - 1].mean(0)
        if y < 20 and z < 20:
            right.text(y, z, f"{e}", ha="center", va="center", color=BLUE, fontweight="bold")
    y, z = nodes[elements[0] - 1].mean(0)
    turn(right, (y, z), 1.5, RED, -120, 150)
    right.set_aspect("equal")
    right.set_xlim(-2, 22)
    right.set_ylim(-2, 22)
    right.axis("off")
    first = ", ".join(str(n) for n in elements[0])
    right.set_title(f"element 1: nodes {first}, counter-clockwise", fontsize=9)
    save("mesh")


def angle_frame(r):
    alpha, centroid = r.ALPHA, np.array([r.YC, r.ZC])
    return alpha, centroid, np.array([np.cos(alpha), np.sin(alpha)]), np.array([-np.sin(alpha), np.cos(alpha)])


def draw_frames():
    """Axes of the angle, and what is positive."""
    nodes, elements = angle(5)
    r = calculate(nodes, elements)
    alpha, centroid, u, v = angle_frame(r)
    shear = np.array([r.SCY, r.SCZ])
    figure, (left, right) = plt.subplots(1, 2, figsize=(8.6, 5.0))
    for ax in (left, right):
        outline(ax, ANGLE_OUTLINE)
        ax.set_aspect("equal")
        ax.set_xlim(-33, 82)
        ax.set_ylim(-16, 118)
        ax.axis("off")
        for axis, name, length in ((u, "u", 58), (v, "v", 70)):
            arrow(ax, centroid - 0.35 * length * axis, centroid + length * axis, BLUE, 1.1)
            ax.text(*(centroid + (length + 4) * axis), name, color=BLUE, ha="center", va="center", fontsize=11)
        ax.plot(*centroid, "o", color=BLUE, markersize=5)
        ax.plot(*shear, "D", color=RED, markersize=5)

    arrow(left, (0, 0), (76, 0), INK)
    arrow(left, (0, 0), (0, 112), INK)
    left.text(79, 0, "Y", ha="center", va="center", fontsize=11)
    left.text(0, 116, "Z", ha="center", va="center", fontsize=11)
    left.plot(0, 0, "o", color=INK, markersize=4)
    left.text(-2, -3, "host's origin", ha="right", va="top", fontsize=8)
    left.plot([centroid[0], centroid[0] + 48], [centroid[1]] * 2, color=GREY, linewidth=0.7, linestyle="--")
    left.add_patch(Arc(centroid, 66, 66, theta1=0, theta2=np.degrees(alpha), color=BLUE, linewidth=1))
    left.text(centroid[0] + 37, centroid[1] + 5.2, f"ALPHA {np.degrees(alpha):.2f}°", color=BLUE, fontsize=8)
    left.text(centroid[0] + 11, centroid[1] - 3.5, f"centroid\nYC {centroid[0]:.2f}, ZC {centroid[1]:.2f}", color=BLUE,
              fontsize=8, va="top")
    left.annotate(f"shear centre\nSCY {shear[0]:.2f}, SCZ {shear[1]:.2f}", shear, (18, -12), color=RED, fontsize=8,
                  va="center", arrowprops={"arrowstyle": "-", "color": RED, "linewidth": 0.8})
    left.set_title("frames", fontsize=10)

    turn(right, shear, 17, RED, -75, 165)
    right.text(shear[0] - 18, shear[1] + 9, "T", color=RED, ha="right", fontsize=11)
    for axis in (u, v):
        arrow(right, shear, shear + 36 * axis, RED, 1.8, scale=13)
    right.text(*(shear + 40 * u + (1, -1)), "$V_u$", color=RED, fontsize=11, va="center")
    right.text(*(shear + 40 * v + (-2, 1)), "$V_v$", color=RED, fontsize=11, ha="right", va="center")
    for axis in (u, v):
        head = centroid + 40 * axis
        arrow(right, centroid, head, GREEN, 2, scale=13)
        arrow(right, centroid, head - 3.5 * axis, GREEN, 2, scale=13)
    right.text(*(centroid + 36 * u + (3, 6)), "$M_u$", color=GREEN, fontsize=11, ha="center")
    right.text(*(centroid + 36 * v + (5, 0)), "$M_v$", color=GREEN, fontsize=11, ha="left")
    right.plot(*centroid, "o", color="white", markeredgecolor=GREEN, markersize=11, markeredgewidth=1.5)
    right.plot(*centroid, "o", color=GREEN, markersize=4)
    right.text(centroid[0] + 5, centroid[1] - 5, "N, x", color=GREEN, fontsize=10, va="top")
    right.set_title("what is positive (x towards you)", fontsize=10)
    save("frames")


def draw_warping():
    """The three columns of NODEOUT of the angle."""
    nodes, elements = angle(2.5)
    r = calculate(nodes, elements)
    alpha, centroid, u, v = angle_frame(r)
    split = np.vstack([elements[:, [0, 1, 2]], elements[:, [0, 2, 3]]]) - 1
    mesh = Triangulation(nodes[:, 0], nodes[:, 1], split)
    figure, axes = plt.subplots(1, 3, figsize=(8.6, 4.2))
    titles = ["column 1: unit twist\nabout the shear centre (mm²)", "column 2: unit shear\nstrain along u (mm)",
              "column 3: unit shear\nstrain along v (mm)"]
    for k, (ax, title) in enumerate(zip(axes, titles)):
        field = r.warping[:, k]
        size = np.abs(field).max()
        levels = np.linspace(-size, size, 15)
        filled = ax.tricontourf(mesh, field, levels, colors=colours(14))
        ax.tricontour(mesh, field, levels, colors=INK, linewidths=0.25)
        ax.add_patch(Polygon(ANGLE_OUTLINE, fill=False, edgecolor=INK, linewidth=1))
        section_axes(ax, nodes, title)
        bar = figure.colorbar(filled, ax=ax, shrink=0.75, pad=0.0, ticks=[-size, 0, size])
        bar.ax.set_yticklabels([f"{x:.3g}" for x in (-size, 0, size)], fontsize=8)
        bar.outline.set_linewidth(0.5)
        if k == 0:
            ax.plot(r.SCY, r.SCZ, "D", color=INK, markersize=4)
        else:
            axis = (u, v)[k - 1]
            arrow(ax, (33, 52), np.array([33, 52]) + 22 * axis, INK)
            ax.text(*(np.array([33, 52]) + 27 * axis), "uv"[k - 1], ha="center", va="center")
    save("warping")


def draw_arrows(ax, nodes, elements, tau, length, shown):
    """Mean shear stress of the corners of each shown element, the largest of all drawn `length` long."""
    tau = tau.mean(1)
    largest = np.hypot(*tau.T).max()
    middle, tau = nodes[elements - 1].mean(1)[shown], (tau / largest)[shown]
    ax.quiver(*middle.T, *tau.T, angles="xy", scale_units="xy", scale=1 / length, color=BLUE, pivot="mid", width=0.0075,
              headwidth=4, headlength=4, headaxislength=3.6, minlength=0.1)
    return largest


def draw_shear_stress():
    """Load cases 1 to 3 of the shear stresses, at the middle of every third element along the legs."""
    nodes, elements = angle(2.5)
    r = calculate(nodes, elements)
    alpha, centroid, u, v = angle_frame(r)
    shear = np.array([r.SCY, r.SCZ])
    i, j = np.floor(nodes[elements - 1].mean(1) / 2.5).astype(int).T
    shown = np.where(j >= 4, j % 3 == 0, i % 3 == 0)
    figure, axes = plt.subplots(1, 3, figsize=(8.6, 4.4))
    for q, (ax, title) in enumerate(zip(axes, ["1: torque", "2: force along u", "3: force along v"])):
        outline(ax, ANGLE_OUTLINE)
        largest = draw_arrows(ax, nodes, elements, shear_stress(r, q), 7.2, shown)
        section_axes(ax, nodes, title, 0.14)
        ax.plot(*shear, "D", color=RED, markersize=4)
        if q == 0:
            turn(ax, shear, 15, RED, -80, 60)
        else:
            arrow(ax, shear, shear + 30 * (u, v)[q - 1], RED, 1.8)
        ax.text(40, 85, f"longest arrow\n{largest:.3g}", fontsize=8, color=GREY, ha="center")
    save("shear_stress")


def corner_contours(ax, nodes, elements, sigma, size):
    """Values (e, corner), corners of their own for each element, as ELEMOUT has them. Returns the corners' places."""
    split = np.array([[0, 1, 2], [0, 2, 3]])
    corners = (4 * np.arange(len(elements))[:, None, None] + split).reshape(-1, 3)
    place = nodes[elements - 1].reshape(-1, 2)
    mesh = Triangulation(place[:, 0], place[:, 1], corners)
    ax.tricontourf(mesh, sigma.ravel(), np.linspace(-1.0001 * size, 1.0001 * size, 16), colors=colours(15))
    return place


def label_corners(ax, place, sigma, labels):
    for y, z, dy, dz in labels:
        at = np.flatnonzero(np.all(np.abs(place - (y, z)) < 1e-9, axis=1))[0]
        ax.text(y + dy, z + dz, format(sigma.ravel()[at], "+.2g" if np.abs(sigma).max() < 1 else "+.0f"), fontsize=8,
                ha="center", va="center")


def draw_axial_stress():
    """Load cases 1 to 3 of the axial stresses at the corners, red tension, blue compression."""
    nodes, elements = angle(5)
    r = calculate(nodes, elements)
    alpha, centroid, u, v = angle_frame(r)
    figure, axes = plt.subplots(1, 3, figsize=(8.6, 4.4))
    for q, (ax, title) in enumerate(zip(axes, ["1: normal force", "2: moment about u", "3: moment about v"])):
        sigma = r.SIGMA[:, :, q]
        place = corner_contours(ax, nodes, elements, sigma, np.abs(sigma).max() * (2 if q == 0 else 1))
        ax.add_patch(Polygon(ANGLE_OUTLINE, fill=False, edgecolor=INK, linewidth=1))
        section_axes(ax, nodes, title, 0.16)
        label_corners(ax, place, sigma, ((0, 100, 5, 6), (60, 0, -4, -7), (0, 0, 2, -7)))
        if q > 0:
            axis = (u, v)[q - 1]
            arrow(ax, centroid - 20 * axis, centroid + 36 * axis, GREEN, 1.6)
            arrow(ax, centroid, centroid + 32.5 * axis, GREEN, 1.6)
            ax.text(*(centroid + (42 if q == 1 else 30) * axis + (0 if q == 1 else 10, 0)), f"$M_{'uv'[q - 1]}$",
                    color=GREEN, ha="center", va="center", fontsize=10)
    save("axial_stress")


def draw_channel():
    """Warping, bimoment and warping shear of a channel."""
    nodes, elements = grid(2.5, 24, 48, lambda i, j: i < 4 or j < 4 or j >= 44)
    r = calculate(nodes, elements)
    walls = [(0, 0), (60, 0), (60, 10), (10, 10), (10, 110), (60, 110), (60, 120), (0, 120)]
    figure, axes = plt.subplots(1, 3, figsize=(8.6, 4.0))
    i, j = np.floor(nodes[elements - 1].mean(1) / 2.5).astype(int).T
    titles = ["NODEOUT column 1", "axial stress, unit bimoment", "shear stress, unit warping shear"]
    for k, (ax, title) in enumerate(zip(axes, titles)):
        if k < 2:
            field = (r.warping[:, 0][elements - 1], r.SIGMA[:, :, 3])[k]
            place = corner_contours(ax, nodes, elements, field, np.abs(field).max())
            label_corners(ax, place, field, ((60, 120, -6, 6), (60, 0, -6, -6), (0, 0, 4, -6), (0, 120, 4, 6)))
            ax.add_patch(Polygon(walls, fill=False, edgecolor=INK, linewidth=1))
        else:
            outline(ax, walls)
            shown = np.where((j < 4) | (j >= 44), i % 3 == 0, j % 3 == 0)
            largest = draw_arrows(ax, nodes, elements, shear_stress(r, 3), 7.2, shown)
            ax.text(36, 60, f"longest arrow\n{largest:.3g}", fontsize=8, color=GREY, ha="center", va="center")
            turn(ax, (r.SCY, r.SCZ), 15, RED, -60, 60)
        section_axes(ax, np.vstack([nodes, (r.SCY - 2, 60)]), title, 0.1)
        ax.plot(r.SCY, r.SCZ, "D", color=RED, markersize=4)
    save("channel")


def draw_plastic():
    """The four plastic axes of a T of unequal strengths in the host's axes."""
    inside = lambda i, j: j >= 16 or 8 <= i < 12
    nodes, elements = grid(10, 20, 20, inside, -100, -100)
    r = calculate(nodes, elements, FNEG=400, FPOS=250)
    figure, axes = plt.subplots(1, 4, figsize=(8.6, 3.0))
    cases = [("2", 1, "PLAXIS_Z", "PLMOM_Z"), ("-2", 1, "PLAXIS_Z_NEG", "PLMOM_Z_NEG"), ("1", 0, "PLAXIS_Y", "PLMOM_Y"),
             ("-1", 0, "PLAXIS_Y_NEG", "PLMOM_Y_NEG")]
    for ax, (direction, axis, line, moment) in zip(axes, cases):
        L, above = getattr(r, line), "FPOS" if direction[0] != "-" else "FNEG"
        below = "FNEG" if above == "FPOS" else "FPOS"
        for side, limits in ((above, (L, None)), (below, (None, L))):
            parts = nodes.copy()
            parts[:, axis] = np.clip(parts[:, axis], *limits)
            fill(ax, [parts[e - 1] for e in elements], TINT[RED if side == "FPOS" else BLUE])
        draw_mesh(ax, nodes, elements, 0.2, "none")
        section_axes(ax, nodes, f"direction {direction}")
        put = (lambda p, q: (q, p)) if axis else (lambda p, q: (p, q))
        ax.plot(*zip(put(L, -118), put(L, 118)), color=INK, linewidth=1.4)
        ends = ((L + 9, above), (L - 9, below)) if axis else ((L + 5, above), (L - 5, below))
        for p, side in ends:
            ax.text(*put(p, -60 if axis else -88), side, fontsize=8, color=RED if side == "FPOS" else BLUE,
                    ha="center" if axis else ("left" if p > L else "right"), va="center")
        ax.text(0, -135, f"{line}\n{L:.2f} mm\n{moment}\n{getattr(r, moment) / 1e6:.1f} kNm",
                fontsize=7.5, ha="center", va="top")
    save("plastic")


def draw_coupled():
    """Stress of a unit moment about Y over the height of two squares upon each other, for three coupling factors."""
    nodes, elements = grid(0.25, 8, 16)
    upper = nodes[elements - 1].mean(1)[:, 1] > 2
    figure, axes = plt.subplots(1, 4, figsize=(8.6, 2.7), sharey=True)
    axes[0].add_patch(Rectangle((-1, 0), 2, 2, facecolor=TINT[BLUE], edgecolor=INK))
    axes[0].add_patch(Rectangle((-1, 2), 2, 2, facecolor=TINT[SAND], edgecolor=INK))
    axes[0].text(0, 1, "group 1", ha="center", va="center")
    axes[0].text(0, 3, "group 2", ha="center", va="center")
    axes[0].set_xlim(-1.5, 1.5)  # squares, at the height of the stresses
    axes[0].axis("off")
    for ax, factor in zip(axes[1:], (0, 0.5, 1)):
        r = calculate(nodes, elements, COUPLING=factor, GROUP=1 + upper, EMOD=1, GMOD=1)
        for part, color in ((~upper, BLUE), (upper, SAND)):
            z = nodes[elements[part] - 1][:, :, 1].ravel()
            sigma = r.SIGMA[part][:, :, 1].ravel()
            low, high = z.argmin(), z.argmax()
            ends = ([sigma[low], sigma[high]], [z[low], z[high]])
            ax.fill_betweenx(ends[1], 0, ends[0], color=TINT[color])
            ax.plot(*ends, color=color, linewidth=1.6)
        ax.axvline(0, color=INK, linewidth=0.8)
        ax.set_xlim(-0.45, 0.45)
        ax.set_ylim(-0.15, 4.15)
        ax.set_title(f"COUPLING {factor}: IZZ {r.IZZ:.3f}", fontsize=9)
        ax.tick_params(labelsize=8)
        ax.set_xlabel(r"$\sigma$ of $M_u$ = 1", fontsize=8)
        for side in ("top", "right", "left"):
            ax.spines[side].set_visible(False)
        ax.tick_params(left=False)
    save("coupled")


def draw_pieces():
    """A seam with shared and with doubled nodes: the same outline, other sections."""
    nodes, elements = grid(0.25, 8, 16)
    doubled = np.vstack([nodes, nodes[np.abs(nodes[:, 1] - 2) < 1e-9]])
    seam = {n + 1: len(nodes) + k + 1 for k, n in enumerate(np.flatnonzero(np.abs(nodes[:, 1] - 2) < 1e-9))}
    upper = nodes[elements - 1].mean(1)[:, 1] > 2
    cut = elements.copy()
    cut[upper] = [[seam.get(n, n) for n in row] for row in elements[upper]]
    figure, axes = plt.subplots(1, 2, figsize=(6.2, 2.9))
    for ax, n, e, gap, title in ((axes[0], nodes, elements, 0, "nodes shared: one piece"),
                                 (axes[1], doubled, cut, 0.18, "nodes doubled: two pieces")):
        r = calculate(n, e, EMOD=1, GMOD=1)
        shown = n.copy()
        shown[np.unique(e[upper]) - 1, 1] += gap
        draw_mesh(ax, shown, e)
        section_axes(ax, shown, title)
        ax.set_xlim(-0.4, 6.2)
        ax.set_ylim(-0.2, 4.4)
        values = [("GJ", r.GJ), ("GAZ", r.GAZ), ("shear centre Y", r.SCY if gap == 0 else None), ("IYY", r.IYY)]
        for k, (name, value) in enumerate(values):  # a shear centre of pieces is rounding over rounding
            ax.text(2.5, 3.3 - 0.55 * k, f"{name}  {'none' if value is None else format(value, '.3f')}", fontsize=8.5)
    save("pieces")


if __name__ == "__main__":
    FOLDER.mkdir(parents=True, exist_ok=True)
    for draw in (draw_tables, draw_elemout, draw_bar, draw_slots, draw_mesh_numbers, draw_frames, draw_warping,
                 draw_shear_stress, draw_axial_stress, draw_channel, draw_plastic, draw_coupled, draw_pieces):
        draw()
