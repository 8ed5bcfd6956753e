// What the tests of the page share: programs of the build, made recordings, and a browser that
// counts requests and errors.
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { pathToFileURL } from "node:url";
import { chromium } from "playwright-core";

const { GZD_BIN: bin, GZD_PAGE: pages } = process.env;
export const work = mkdtempSync(join(tmpdir(), "gzdpage-"));
export const removeWork = () => rmSync(work, { recursive: true, force: true });
export const inWork = (name) => join(work, name);

/** Standard output of a program; what it ends with is left to the caller. */
export function run(program, ...words) {
  const path = join(bin, program, program);
  try {
    return execFileSync(path, words, { cwd: work, encoding: "utf8", maxBuffer: 1 << 30, stdio: ["ignore", "pipe", "pipe"] });
  } catch (error) {
    return error.stdout;
  }
}

/** A made recording; `change` may alter its bytes, read as Latin-1. */
export function makeRecording(name, words, change = (text) => text) {
  run("gzdsynth", ...words, name);
  writeFileSync(inWork(name), Buffer.from(change(readFileSync(inWork(name), "latin1")), "latin1"));
  return inWork(name);
}

/** The lines of a text but the one that tells when it was made. */
export const withoutDate = (text) => text.replace(/^(\*\* CONVERTED FROM .*) on .*$/m, "$1");

export const pageAddress = () => pathToFileURL(join(pages, "index.html")).href;

/** A browser tab; `troubles` collects requests beyond the page itself, and errors. */
export async function openTab(options = {}) {
  const browser = await chromium.launch({ executablePath: process.env.CHROMIUM, args: ["--no-sandbox"] });
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 }, ...options });
  context.setDefaultTimeout(120_000);
  const tab = await context.newPage();
  const troubles = [];
  tab.on("request", (request) => {
    if (!/^(file|blob|data):/.test(request.url())) troubles.push(`request: ${request.url()}`);
  });
  tab.on("console", (message) => {
    if (["error", "warning"].includes(message.type())) troubles.push(`console: ${message.text()}`);
  });
  tab.on("pageerror", (error) => troubles.push(`error: ${error.message}`));
  tab.on("dialog", (dialog) => { troubles.push("a text ran as a script"); void dialog.dismiss(); });
  return { tab, troubles, close: () => browser.close() };
}

/** Drops a file on the page, as a user does. */
export async function drop(tab, path, name) {
  const bytes = readFileSync(path).toString("base64");
  await tab.evaluate(([text, fileName]) => {
    const data = new DataTransfer();
    data.items.add(new File([Uint8Array.from(atob(text), (letter) => letter.charCodeAt(0))], fileName));
    document.body.dispatchEvent(new DragEvent("drop", { dataTransfer: data, bubbles: true, cancelable: true }));
  }, [bytes, name]);
}

/** Opens a file by the field for files, and waits until all of its views are there. */
export async function choose(tab, path) {
  await tab.setInputFiles("#input", path);
  await tab.getByRole("tab", { name: "Tables" }).waitFor();
}

export const facts = (tab) =>
  tab.$$eval("[data-fact]", (cells) => Object.fromEntries(cells.map((cell) => [cell.dataset.fact, cell.textContent])));

export const windowOf = async (tab) =>
  (await tab.getAttribute("[data-window]", "data-window")).split(" ").map(Number);
