// A browser on the page, as tests use it. VELQUOR_PAGE is the server's address; without it $VELQUOR_COMMAND serves.
import {spawn, execFileSync} from "node:child_process";
import {readFileSync, writeFileSync, mkdtempSync} from "node:fs";
import {tmpdir} from "node:os";
import {join} from "node:path";
import {chromium} from "playwright-core";

export const command = process.env.VELQUOR_COMMAND;

async function serve() {
  if (process.env.VELQUOR_PAGE) return {address: process.env.VELQUOR_PAGE, end() {}};
  const server = spawn(command, ["serve", "--port", "0"], {stdio: ["ignore", "pipe", "inherit"]});
  const address = await new Promise((resolve, reject) => {
    let text = "";
    server.stdout.on("data", (data) => {
      const found = /https?:\/\/\S+/.exec((text += data));
      if (found) resolve(found[0]);
    });
    server.on("exit", () => reject(new Error(`the server ended: ${text}`)));
  });
  return {address, end: () => server.kill()};
}

export async function start() {
  const server = await serve();
  const browser = await chromium.launch({
    executablePath: process.env.VELQUOR_CHROMIUM ?? "/usr/bin/chromium",
    args: ["--no-sandbox", "--use-gl=angle", "--use-angle=swiftshader", "--enable-unsafe-swiftshader"],
  });
  return {browser, address: server.address, async end() { await browser.close(); server.end(); }};
}

// A page of its own, which fails its test where a script failed, a file was missing or another server was asked.
export async function open(host, hash = "", options = {}) {
  const context = await host.browser.newContext({viewport: {width: 1280, height: 800}, acceptDownloads: true, permissions: ["clipboard-read", "clipboard-write"], ...options});
  const page = await context.newPage(), faults = [];
  page.on("pageerror", (error) => faults.push(String(error)));
  page.on("console", (message) => { if (message.type() === "error" && !/409|Failed to load resource/.test(message.text())) faults.push(message.text()); });
  page.on("request", (request) => { if (!request.url().startsWith(host.address) && !/^(blob|data):/.test(request.url())) faults.push(request.url()); });
  await page.goto(host.address + hash);
  await rest(page);
  return {page, faults, end: () => context.close()};
}

// Until the newest state has its full picture, or is refused.
export async function rest(page, wanted = ["full", "wrong"]) {
  for (let k = 0; k < 400; ++k) {
    await page.waitForTimeout(50);
    const now = await page.evaluate(() => ({view: document.documentElement.dataset.view, busy: document.documentElement.hasAttribute("data-busy")}));
    if (!now.busy && wanted.includes(now.view)) {
      await page.waitForTimeout(60);
      if (!(await page.evaluate(() => document.documentElement.hasAttribute("data-busy")))) return now.view;
    }
  }
  throw new Error("the page does not come to rest");
}

// Values as numbers, by their keys, as the page shows them.
export const values = (page) => page.evaluate(() => Object.fromEntries([...document.querySelectorAll("#values tr[data-key]")].map((row) =>
  [row.dataset.key, Number(row.querySelector(".number").textContent.replace("−", "-"))])));

export async function pick(page, name) {
  await page.fill("#kind", name);
  await page.press("#kind", "Enter");
  return changed(page);
}
// After a change: the draft that it asks for, then rest.
export async function changed(page) {
  await page.waitForTimeout(30);
  return rest(page);
}

// What the command makes of a file: its values by their keys, in the file's own units or those given.
export function calculated(text, units = []) {
  const path = join(mkdtempSync(join(tmpdir(), "page-")), "section.json");
  writeFileSync(path, text);
  return JSON.parse(execFileSync(command, ["calc", path, "--json", ...units], {encoding: "utf8"})).sections[0].values;
}
// A file of the sources, whose folder is VELQUOR_ROOT.
export const file = (path) => readFileSync(join(process.env.VELQUOR_ROOT, path), "utf8");
