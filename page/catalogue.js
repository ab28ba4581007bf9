// What there is to choose from: profiles, shapes, values, loads, units and materials, as the server tells them.
const asked = await fetch("catalogue.json");
if (!asked.ok) throw new Error(`catalogue: ${asked.status}`);
export const catalogue = await asked.json();

catalogue.profiles = catalogue.families.flatMap(({name: family, columns, profiles, ...same}) =>
  profiles.map(([name, ...values]) => ({
    ...same, family, name, parameters: Object.fromEntries(columns.map((column, k) => [column, values[k]])),
  })));

const by = (list, key) => new Map(list.map((entry) => [entry[key], entry]));
export const profiles = by(catalogue.profiles, "name");
export const shapes = by(catalogue.shapes, "name");
export const lengths = by(catalogue.lengths, "name");
export const forces = by(catalogue.forces, "name");
