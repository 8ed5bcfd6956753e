// The page in a real browser: what it shows and hands out is what the programs say.
import assert from "node:assert/strict";
import { readFileSync, statSync, truncateSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { after, before, test } from "node:test";
import { pathToFileURL } from "node:url";
import { choose, drop, facts, inWork, makeRecording, openTab, pageAddress, removeWork, run, windowOf, withoutDate } from "./support.mjs";

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const told = "RECCFG RATE 1000 FILTER 2 EYES LR"; // by the recording's maker
const hostile = "<img src=x onerror=alert(1)>";
const commas = (number) => new Intl.NumberFormat("en").format(number);
let demo, damaged;

before(() => {
  demo = makeRecording("demo.gzd", ["--duration", "20", "--trials", "3", "--gap", "30"], (text) =>
    text.replaceAll(told, hostile.padEnd(told.length)));
  damaged = makeRecording("damaged.gzd", ["--duration", "20"]);
  truncateSync(damaged, Math.floor(statSync(damaged).size * 0.6));
});
after(removeWork);

/** Runs with a tab at `address`; whatever happened in it must have been quiet. */
async function inTab(address, act, options) {
  const { tab, troubles, close } = await openTab(options);
  try {
    await tab.goto(address);
    await act(tab);
    assert.deepEqual(troubles, []);
  } finally {
    await close();
  }
}

function assertFacts(shown, file) {
  const { elements } = JSON.parse(run("gzdtool", "info", "--json", file));
  const names = { samples: "Samples", fixations: "Fixations", saccades: "Saccades", blinks: "Blinks", messages: "Messages", buttons: "Button changes", blocks: "Blocks" };
  for (const [key, name] of Object.entries(names)) assert.equal(shown[name], commas(elements[key]), name);
}

async function assertAccessible(tab) {
  for (const view of await tab.getByRole("tab").all()) {
    await view.click();
    const seen = await tab.evaluate(`(() => { const module = undefined, exports = undefined; ${axe}; return axe.run(); })()`);
    const serious = seen.violations.filter(({ impact }) => ["serious", "critical"].includes(impact));
    assert.deepEqual(serious.map(({ id, nodes }) => [id, nodes[0].html]), [], await view.textContent());
  }
}

async function assertZooms(tab) {
  await tab.getByRole("tab", { name: "Trace" }).click();
  await tab.waitForFunction(() => document.querySelector("[data-window]").dataset.window !== "");
  const [from, to] = await windowOf(tab);
  await tab.locator(".curves").focus();
  await tab.keyboard.press("+");
  await tab.waitForFunction((whole) => document.querySelector("[data-window]").dataset.window !== whole, `${from} ${to}`);
  const [closer, end] = await windowOf(tab);
  assert.equal(Math.round(end - closer), Math.round((to - from) / 2));
  const box = await tab.locator(".u-over").first().boundingBox();
  await tab.mouse.move(box.x + box.width / 4, box.y + 50);
  await tab.mouse.down();
  await tab.mouse.move(box.x + box.width / 2, box.y + 60, { steps: 4 });
  await tab.mouse.up();
  await tab.waitForFunction((half) => document.querySelector("[data-window]").dataset.window !== half, `${closer} ${end}`);
  const [left, right] = await windowOf(tab);
  assert.ok(Math.abs((right - left) / (end - closer) - 0.25) < 0.02, `dragged over ${right - left} ms`);
}

async function saved(tab, name) {
  const [download] = await Promise.all([tab.waitForEvent("download"), tab.getByRole("button", { name }).click()]);
  return readFileSync(await download.path(), "latin1");
}

/** `ticked` are options that the form has ticked by itself. */
async function assertTextEqual(tab, file, options, ticked = []) {
  await tab.getByRole("tab", { name: "ASC text" }).click();
  await tab.getByLabel("Other options").fill(options.join(" "));
  const there = withoutDate(await saved(tab, "Save the ASC text"));
  run("gzdconv", "-y", ...ticked, ...options, file);
  const here = readFileSync(inWork(file.replace("gzd", "asc")), "latin1").replace("ARGUMENTS USED: -y ", "ARGUMENTS USED: ");
  assert.ok(there === withoutDate(here), `${file} ${options}: ${there.length} of ${here.length} bytes`);
}

async function assertTableEqual(tab, table, file) {
  await tab.getByRole("tab", { name: "Tables" }).click();
  await tab.getByLabel("Table", { exact: true }).selectOption(table);
  await tab.getByRole("button", { name: "Sort by text" }).waitFor();
  assert.equal(Buffer.from(await saved(tab, "Save as TSV"), "latin1").toString(), run("gzdtool", table, file));
}

test("a dropped recording is told as the programs tell it, without a request or an error", async () => {
  await inTab(pageAddress(), async (tab) => {
    await drop(tab, demo, "demo.gzd");
    await tab.getByRole("tab", { name: "Tables" }).waitFor();
    assertFacts(await facts(tab), demo);
    const { findings } = JSON.parse(run("gzdtool", "check", "--json", demo));
    assert.equal(await tab.locator(".findings > li").count(), findings.length);
    await assertZooms(tab);
    await assertTextEqual(tab, "demo.gzd", ["-res", "-vel"]);
    await assertTableEqual(tab, "messages", demo);
    await tab.getByLabel("Search").fill("<img");
    await tab.locator("tbody tr:has-text('onerror')").nth(2).waitFor();
    assert.equal(await tab.locator("img").count(), 0);
    await tab.getByRole("tab", { name: "Overview" }).click();
    await tab.locator(".findings button").first().click();
    assert.equal(await tab.getByRole("tab", { name: "Trace" }).getAttribute("aria-selected"), "true");
  });
});

test("of a damaged recording all before the damage is shown, and of no recording nothing", async () => {
  writeFileSync(inWork("text.gzd"), "no recording");
  await inTab(pageAddress(), async (tab) => {
    await choose(tab, damaged);
    assertFacts(await facts(tab), damaged);
    assert.equal(await tab.getAttribute("[data-verdict]", "data-verdict"), "lossy");
    await assertTextEqual(tab, "damaged.gzd", ["-s"], ["-failsafe"]);
    await tab.setInputFiles("#input", inWork("text.gzd"));
    await tab.locator(".failure").waitFor();
    assert.equal(await tab.locator("[data-fact]").count(), 0);
  });
});

test("the page cannot ask anything of anyone", async () => {
  const { tab, close } = await openTab();
  await tab.goto(pageAddress());
  const refused = await tab.evaluate(() => new Promise((tell) => {
    document.addEventListener("securitypolicyviolation", (event) => tell(event.effectiveDirective));
    fetch("https://localhost/").then(() => tell("sent"), () => setTimeout(tell, 1000, "failed"));
  }));
  await close();
  assert.equal(refused, "connect-src");
});

test("a report shows the same without the recording", async () => {
  run("gzdtool", "report", demo, "-o", inWork("report.html"), "--page", `${process.env.GZD_PAGE}/report.html`);
  await inTab(pathToFileURL(inWork("report.html")).href, async (tab) => {
    await tab.getByRole("tab", { name: "Tables" }).waitFor();
    assertFacts(await facts(tab), demo);
    await assertZooms(tab);
    await assertAccessible(tab);
  });
});

test("views have names and contrast at every size, in light and dark", async () => {
  const sizes = { phone: [390, 800], tablet: [820, 1100], desk: [1440, 900] };
  for (const [name, [width, height]] of Object.entries(sizes)) {
    const colorScheme = name === "tablet" ? "dark" : "light";
    await inTab(pageAddress(), async (tab) => {
      await choose(tab, demo);
      await assertAccessible(tab);
      assert.ok(await tab.evaluate(() => document.documentElement.scrollWidth <= innerWidth), `${name} is too narrow`);
      if (process.env.GZD_SHOTS) for (const view of await tab.getByRole("tab").all()) {
        await view.click();
        await tab.waitForTimeout(400);
        await tab.screenshot({ path: `${process.env.GZD_SHOTS}/${name}-${await view.textContent()}.png`, fullPage: true });
      }
    }, { viewport: { width, height }, colorScheme });
  }
});
