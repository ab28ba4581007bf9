"""A channel of three plates, flanges 80 x 10 and web 180 x 10 mm, from its nodes to its values. Units N, mm, kg."""
import numpy as np

from velquor import core

SIDE = 2.5  # of the square elements: four layers through each plate
y, z = np.meshgrid(np.arange(0, 80, SIDE), np.arange(-100, 100, SIDE))
steel = (y < 10) | (z < -90) | (z >= 90)
y, z = y[steel], z[steel]  # the lower left corners of the elements

corners = np.stack([y, z, y + SIDE, z, y + SIDE, z + SIDE, y, z + SIDE], axis=1)  # counter-clockwise
nodes, numbers = np.unique(corners.reshape(-1, 2), axis=0, return_inverse=True)
elements = 1 + numbers.reshape(-1, 4)
props = core.property_table(len(elements), EMOD=210e3, GMOD=80.77e3, FNEG=235, FPOS=235, UNITWEIGHT=7.85e-6)

section = core.calculate(nodes, elements, props)

print(f"{len(nodes)} nodes, {len(elements)} elements")
print(f"A     {section.EA / section.EREF:10.1f} mm2")
print(f"YC    {section.YC:10.3f} mm")
print(f"Iy    {section.IZZ / section.EREF:10.4e} mm4")
print(f"Wpl,y {section.PLMOD_Z:10.4e} mm3")
print(f"SCY   {section.SCY:10.3f} mm")
print(f"It    {section.GJ / section.GREF:10.4e} mm4")
print(f"Iw    {section.IW / section.EREF:10.4e} mm6")
print(f"mass  {section.WEIGHT * 1e3:10.3f} kg/m")

sigma = 10e6 * section.SIGMA[:, :, 1]  # a moment of 10 kNm about the strong axis, at each corner of each element
element, corner = np.unravel_index(sigma.argmax(), sigma.shape)
print(f"sigma {sigma.max():10.3f} N/mm2 at Z {nodes[elements[element, corner] - 1, 1]:g}")
