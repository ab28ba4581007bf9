// The page as a person uses it, in a real browser. See browser.mjs for what it needs.
import assert from "node:assert/strict";
import {after, before, test} from "node:test";
import {readFileSync} from "node:fs";
import {createRequire} from "node:module";
import {calculated, changed, command, file, open, pick, rest, start, values} from "./browser.mjs";

let host;
before(async () => { host = await start(); });
after(() => host?.end());

const near = (a, b, share = 1e-3) => assert.ok(Math.abs(a - b) <= share * Math.abs(b), `${a} is not ${b}`);
const walk = (name, run, options) => test(name, async () => {
  const {page, faults, end} = await open(host, "", options);
  try {
    await run(page);
    assert.deepEqual(faults, []);
  } finally {
    await end();
  }
});
const slide = (page, name, value) => page.$eval(`[data-name="slider-${name}"]`, (slider, to) => {
  slider.value = to;
  slider.dispatchEvent(new Event("input"));
}, value);
const hash_of = async (page) => {
  await page.waitForTimeout(450);
  return page.evaluate(() => location.hash);
};

walk("a profile, its dimensions pulled, undone and brought back by a link", async (page) => {
  near((await values(page)).A, 53.812);
  await pick(page, "HEB 200");
  near((await values(page)).A, 78.08);
  assert.equal(await page.inputValue('[data-name="dimension-tw"]'), "9");
  // 20 mm of height more at the web: 0.2 * 9 mm, and no longer a profile.
  for (const h of [205, 210, 220]) await slide(page, "h", h);
  await changed(page);
  near((await values(page)).A, 78.08 + 1.8, 1e-4);
  assert.match(await page.inputValue("#kind"), /^i$/);
  const link = await hash_of(page);
  await page.keyboard.press("Control+z");
  await changed(page);
  assert.equal(await page.inputValue("#kind"), "HEB 200");
  await page.keyboard.press("Control+Shift+z");
  await changed(page);
  near((await values(page)).A, 79.88, 1e-4);

  const other = await open(host, link);
  near((await values(other.page)).A, 79.88, 1e-4);
  assert.equal(await other.page.inputValue('[data-name="dimension-h"]'), "220");
  await other.end();
});

walk("the slider and the arrow of a dimension are pulled by hand", async (page) => {
  const slider = page.locator('[data-name="slider-h"]'), rail = await slider.boundingBox(), level = rail.y + rail.height / 2;
  const end = rail.x + 8 + (rail.width - 16) * 300 / Number(await slider.getAttribute("max"));
  await page.mouse.move(end, level);
  await page.mouse.down();
  for (let k = 1; k <= 4; ++k) {
    await page.mouse.move(end + 8 * k, level);
    await page.waitForTimeout(60);
  }
  await page.mouse.up();
  await changed(page);
  near(Number(await slider.inputValue()), 300 + 32 / (rail.width - 16) * Number(await slider.getAttribute("max")), 0.02);
  const before = Number(await page.inputValue('[data-name="dimension-h"]'));
  const hit = await page.locator('[data-dimension="h"] .hit').boundingBox();
  const x = hit.x + hit.width / 2;
  await page.mouse.move(x, hit.y + 12);
  await page.mouse.down();
  await page.mouse.move(x, hit.y - 8, {steps: 4});
  await page.mouse.up();
  await changed(page);
  const now = Number(await page.inputValue('[data-name="dimension-h"]'));
  assert.ok(now > before + 30 && now < before + 90, `${before} became ${now}`);
  assert.equal(await page.evaluate(() => document.documentElement.dataset.view), "full");
});

walk("names are typed and taken back, and the one of another is not taken", async (page) => {
  for (const words of ["Materials and units", "Parts"]) await page.click(`summary:has-text('${words}')`);
  await page.click('[data-name="part-name"]');
  await page.keyboard.type("a <b>beam</b>");
  assert.equal(await page.inputValue('[data-name="part-name"]'), "a <b>beam</b>");
  assert.match(await page.textContent('[data-name="part-0"]'), /1 {2}a <b>beam<\/b>/);
  await page.keyboard.press("Control+z");
  assert.equal(await page.inputValue('[data-name="part-name"]'), "");
  await page.click("text=Add a material");
  await changed(page);
  assert.equal(await page.evaluate(() => document.documentElement.dataset.view), "full", "the part keeps its material");
  await page.fill('[data-name="material-name-1"]', "S235");
  await page.focus("#kind");
  assert.equal(await page.inputValue('[data-name="material-name-1"]'), "material 2");
});

walk("a request that came too late is asked again, and a server that was away", async (page) => {
  const refusals = [[409, "cancelled"], [503, "busy"]];
  await page.route("**/answer", (route) => {
    const [status, kind] = refusals.shift() ?? [];
    return status ? route.fulfill({status, json: {error: {kind, message: "not now"}}}) : route.continue();
  });
  await page.fill("#kind", "HEB 200");
  await page.press("#kind", "Enter");
  await page.waitForSelector("#fault:has-text('not now')");
  await rest(page, ["full"]);
  near((await values(page)).A, 78.08);
});

walk("nonsense is told at its place, and nothing is lost", async (page) => {
  const A = (await values(page)).A, field = page.locator('[data-name="dimension-tw"]');
  await field.fill("thick");
  assert.equal(await field.getAttribute("aria-invalid"), "true");
  assert.match(await page.textContent("#dimensions .fault:not([hidden])"), /thick.*not a number/);
  await field.fill("400");  // wider than the flanges
  await page.waitForTimeout(30);
  assert.equal(await rest(page), "wrong");
  assert.match(await page.textContent("#fault"), /parts\[0\]\.parameters.*tw/);
  assert.equal((await values(page)).A, A, "the last good values stay");
  await page.focus("#kind");
  await field.focus();
  await page.keyboard.type("5");
  await page.keyboard.press("Escape");
  assert.equal(await field.inputValue(), "400", "what was there");
  await field.fill("7,5");
  await changed(page);
  assert.ok(await page.isHidden("#fault"));
  assert.ok((await values(page)).A > A);
});

walk("the section file, two ways, with messages at their lines", async (page) => {
  await page.click("summary:has-text('Section file')");
  await page.waitForTimeout(150);
  const section = JSON.parse(await page.inputValue("#json"));
  assert.equal(section.parts[0].profile, "IPE 300");
  await page.fill("#json", '{\n "materials": [{"name": "a", "E": 1}],\n "parts": [\n  {"outline": [[0, 0], [10, 0],\n   [10, 20], [0, 20]]}\n ]\n}');
  await page.waitForTimeout(350);
  await rest(page);
  near((await values(page)).A, 2);
  await page.fill("#json", '{\n "materials": [{"name": "a", "E": 1}],\n "parts": [\n  {"outline": [[0, 0], [10, 0],\n   [10, 20]]},\n  {"shape": "rond",\n   "parameters": {"d": 3}}\n ]\n}');
  await page.waitForTimeout(350);
  assert.equal(await rest(page), "wrong");
  assert.match(await page.textContent("#json-fault"), /^line 6: .*rond/);
  // A name that is no text is told too, also where units are converted.
  await page.fill("#json", '{"materials": [{"name": "a", "E": 1}], "parts": [\n{"shape": 5, "outline": [7], "holes": [8]}]}');
  await page.waitForTimeout(350);
  assert.equal(await rest(page), "wrong");
  await page.click("summary:has-text('Materials and units')");
  await page.selectOption('[data-name="own-units"]', "m kN");
  assert.equal(await rest(page), "wrong");
  assert.match(await page.textContent("#json-fault"), /^line \d+: ./);
  await page.fill("#json", '{\n "materials": [,]\n}');
  await page.waitForTimeout(350);
  assert.match(await page.textContent("#json-fault"), /^line 2: /);
  near((await values(page)).A, 2);
});

const drop_on = (page, name, text) => page.evaluate(([n, t]) => {
  const data = new DataTransfer();
  data.items.add(new File([t], n));
  dispatchEvent(new DragEvent("drop", {dataTransfer: data, bubbles: true, cancelable: true}));
}, [name, text]);

walk("a file's load sets are shown first, its columns scroll and the page does not", async (page) => {
  const section = JSON.parse(file("examples/sections/t_beam.json"));
  section.loads = Array.from({length: 8}, (_, k) => ({name: `set ${k}`, My: `${10 * k + 10}kNm`}));
  await page.check('#fields input[value="mises"]', {force: true});
  await drop_on(page, "loads.json", JSON.stringify(section));
  await changed(page);
  assert.equal(await page.inputValue('[data-name="load-choice"]'), "#0");
  for (const words of ["Materials and units", "Parts", "Bars", "Section file"]) await page.click(`summary:has-text('${words}')`);
  for (const column of ["#input", "#output"]) assert.ok(await page.$eval(column, (e) => e.scrollHeight > 1.5 * e.clientHeight), column);
  assert.equal(await page.evaluate(() => document.documentElement.scrollHeight), 800);
  // What is refused leaves the old results, all of them pale.
  assert.ok(await page.isVisible("#notes"));
  await drop_on(page, "refused.json", '{"materials": [{"name": "a", "E": 1}], "parts": [{"outline": [[0, 0]]}]}');
  await page.waitForTimeout(30);
  assert.equal(await rest(page), "wrong");
  for (const old of ["#notes", "#values", "#accuracy"]) assert.ok(await page.$eval(old, (e) => getComputedStyle(e).opacity < 0.5), old);
});

walk("a drawing and a section file are dropped", async (page) => {
  const drop = (name, text) => drop_on(page, name, text);
  await drop("encased.dxf", file("examples/sections/encased.dxf"));
  await changed(page);
  assert.ok(await page.isVisible("text=Drawing"));
  near((await values(page)).A, 1200);
  assert.equal(await page.locator('[data-name="layer-NOTES"]').count(), 0, "a layer of words alone");
  await page.selectOption('[data-name="layer-CONCRETE"]', "");
  await changed(page);
  near((await values(page)).A, 53.81);
  await drop("t_beam.json", file("examples/sections/t_beam.json"));
  await changed(page);
  near((await values(page)).A, 3150);
  await drop("meshed.json", '{"materials": [{"name": "a", "E": 1}], "mesh": {}}');
  await page.waitForSelector("#told:has-text('meshed.json names another file')");
  // 60,000 numbers, each of which has its line.
  await drop("large.json", JSON.stringify({materials: [{name: "a", E: 1}], parts: [{outline: Array(30000).fill([0, 0])}]}, null, 1));
  await page.waitForSelector("#told:has-text('large.json opened')", {timeout: 5000});
  await page.keyboard.press("Control+z");
  await changed(page);
  await drop("wrong.json", "{\n]");
  await page.waitForSelector("#told:has-text('line 2')");
  assert.match(await page.textContent("#told"), /wrong\.json.*line 2/);
  near((await values(page)).A, 3150);
});

walk("fields, their legend, and the value under the crosshair", async (page) => {
  await pick(page, "rectangle");
  await page.click("text=Add a load set");
  await changed(page);
  assert.ok(await page.isChecked('#fields input[value="mises"]'));
  // 10 kNm on 200 x 300 mm: M / W = 0.3333 kN/cm2 at the edges, where the crosshair begins.
  await page.focus("#lines");
  await page.keyboard.press("c");
  near(Number(/von Mises ([\d.]+) kN\/cm²/.exec(await page.textContent("#place"))[1]), 1 / 3, 5e-3);
  near(Number(await page.textContent('.stresses tr[data-key="von_mises"] td')), 1 / 3, 5e-3);
  for (const field of ["axial", "shear", "warping", "mesh", "outline"]) {
    await page.check(`#fields input[value="${field}"]`, {force: true});
    assert.equal(await page.isVisible("#legend svg"), field === "axial" || field === "warping", field);
  }
  await page.check('#fields input[value="shear"]', {force: true});
  await page.selectOption('[data-name="load-choice"]', "Vz");
  // 1.5 V / A
  near(Number(/to ([\d.]+) kN/.exec(await page.getAttribute("#lines", "aria-label"))[1]), 1.5 / 600, 0.05);
  // Colours, not an empty sheet.
  assert.ok(new Set(await page.locator("#picture").screenshot()).size > 50);
  // Pieces that do not touch have no shear stresses that are known.
  await page.click("summary:has-text('Parts')");
  await page.click("#parts button:has-text('Duplicate')");
  await page.fill('[data-name="at-y"]', "400");
  await page.click("#loads button:has-text('Remove')");
  await changed(page);
  assert.match(await page.textContent("#legend"), /no shear stresses/);
});

walk("every form is exported, and calculates to the same values", async (page) => {
  await pick(page, "rc t");
  await page.click("text=Add a load set");
  await page.selectOption('[data-name="units"]', "mm N");
  await changed(page);
  const told = await values(page), found = {};
  for (const form of ["section", "json", "csv", "svg", "png", "pdf", "html"]) {
    await page.click("#export summary");
    const [download] = await Promise.all([page.waitForEvent("download"), page.click(`[data-form="${form}"]`)]);
    found[form] = readFileSync(await download.path());
    assert.match(download.suggestedFilename(), /^rc_t\.\w+/);
  }
  const same = (values) => {
    for (const key of ["A", "Iy", "It", "Wel_y", "Mpl_y"]) near(values[key].value, told[key], 2e-3);
  };
  same(JSON.parse(found.json).sections[0].values);
  if (command) same(calculated(found.section));
  assert.match(found.csv.toString(), /^rc t,mm,N,31(4999|5000)/m);
  assert.match(found.svg.toString(), /^(<\?xml[^>]*>\s*)?<svg/);
  assert.equal(found.png.subarray(1, 4).toString(), "PNG");
  assert.equal(found.pdf.subarray(0, 5).toString(), "%PDF-");
  assert.match(found.html.toString(), /<title>.*rc t/);
  await page.click("#values-copy");
  await page.waitForTimeout(150);
  const copied = await page.evaluate(() => navigator.clipboard.readText());
  near(Number(/^A\t([\d.e+]+)/m.exec(copied)[1]), told.A);
  await page.click("#link");
  await page.waitForTimeout(150);
  assert.match(await page.evaluate(() => navigator.clipboard.readText()), /#1\./);
});

walk("units: values and a whole section in others", async (page) => {
  await page.selectOption('[data-name="units"]', "in kip");
  await changed(page);
  near((await values(page)).A, 53.812 / 6.4516);
  await page.click("summary:has-text('Materials and units')");
  await page.selectOption('[data-name="own-units"]', "in kip");
  await changed(page);
  near((await values(page)).A, 53.812 / 6.4516);
  near(Number(await page.inputValue('[data-name="dimension-h"]')), 300 / 25.4);
  near(Number(await page.inputValue('[data-name="E-0"]')), 30457.9);
});

test("a wrong link is told, and the page begins with IPE 300", async () => {
  for (const hash of ["#nothing", "#1.%%%", "#1.AAAA", "#1.q1YqTk0uyczPU7KqVkpUslIqSk0sUaoFAA"]) {
    const {page, faults, end} = await open(host, hash);
    assert.match(await page.textContent("#told"), /link holds no section/, hash);
    near((await values(page)).A, 53.812);
    assert.deepEqual(faults, []);
    await end();
  }
});

walk("with the keyboard alone", async (page) => {
  const focused = () => page.evaluate(() => {
    const e = document.activeElement;
    return {id: e.id, name: e.dataset.name, label: e.getAttribute("aria-label") ?? e.labels?.[0]?.textContent ?? e.textContent.trim()};
  });
  const tab_to = async (wanted) => {
    for (let k = 0; k < 120; ++k) {
      await page.keyboard.press("Tab");
      const now = await focused();
      assert.ok(now.label, `a stop without a name: ${JSON.stringify(now)}`);
      if (now.id === wanted || now.name === wanted) return;
    }
    assert.fail(`no way to ${wanted}`);
  };
  await tab_to("kind");
  await page.keyboard.type("ring");
  await page.keyboard.press("ArrowDown");
  await page.keyboard.press("ArrowUp");
  await page.keyboard.press("Enter");
  await changed(page);
  await tab_to("dimension-t");
  await page.keyboard.press("ArrowUp");
  await changed(page);
  const thicker = Number(await page.inputValue('[data-name="dimension-t"]'));
  assert.ok(thicker > 8);
  near((await values(page)).A, Math.PI * thicker * (219.1 - thicker) / 100);
  await tab_to("lines");
  await page.keyboard.press("c");
  await page.keyboard.press("ArrowRight");
  assert.match(await page.textContent("#place"), /y .*z /);
  await tab_to("values-search");
  await page.keyboard.type("torsion");
  assert.deepEqual(Object.keys(await values(page)).filter((key) => key === "A"), []);
  await page.waitForTimeout(1100);
  assert.match(await page.textContent("#spoken"), /ring: A \d+/);
});

test("no rule of accessibility is broken, light, dark, on a tablet and a phone", async () => {
  const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
  for (const [width, height, colorScheme] of [[1280, 800, "light"], [820, 1180, "dark"], [390, 844, "light"]]) {
    const {page, end} = await open(host, "", {viewport: {width, height}, colorScheme, bypassCSP: true});
    await pick(page, "rc rectangle");
    await page.click("text=Add a load set");
    for (const words of ["Materials and units", "Parts", "Bars", "Section file"]) await page.click(`summary:has-text('${words}')`);
    await changed(page);
    await page.addScriptTag({content: axe});
    const {violations} = await page.evaluate(() => axe.run());
    assert.deepEqual(violations.map((v) => `${v.id}: ${v.nodes.slice(0, 3).map((n) => n.html.slice(0, 120)).join(" | ")}`), [], `${width} ${colorScheme}`);
    assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), `${width}: nothing beside the page`);
    await end();
  }
});

walk("slider to picture: the page's own part is small", async (page) => {
  const times = [];
  for (let k = 0; k < 12; ++k) {
    await slide(page, "h", 300 + 4 * k);
    await page.waitForTimeout(150);
    times.push(Number(await page.evaluate(() => document.documentElement.dataset.milliseconds)));
  }
  times.sort((a, b) => a - b);
  console.log(`slider to picture: median ${times[6]} ms, most ${times.at(-1)} ms`);
  assert.ok(times.every((t) => t > 0 && t < 5000));
});
