// What the page costs: seconds until an hour of recording is seen, and processor time of a default
// conversion against gzdconv's. Run by scripts/test-web --times.
import { spawnSync } from "node:child_process";
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { makeRecording, openTab, pageAddress, removeWork } from "../tests/support.mjs";

const seconds = process.argv[2] ?? "3600"; // of the recording
const rounds = 5;
const median = (values) => values.sort((a, b) => a - b)[Math.floor(values.length / 2)];
const createModule = createRequire(import.meta.url)(process.env.GZD_MODULE);
const wasmBinary = readFileSync(process.env.GZD_MODULE.replace(/js$/, "wasm"));

/** Seconds from the choice of a file until each of the views is there. */
async function opening(path) {
  const { tab, close } = await openTab();
  await tab.goto(pageAddress());
  await tab.evaluate(() => {
    const seen = (globalThis.seen = {});
    const wanted = { overview: "[data-fact]", verdict: "[data-verdict]", loss: ".loss", "all views": "#tab-tables" };
    document.getElementById("input").addEventListener("change", () => {
      const start = performance.now();
      new MutationObserver(() => {
        for (const [name, place] of Object.entries(wanted))
          if (document.querySelector(place)) seen[name] ??= (performance.now() - start) / 1000;
      }).observe(document.body, { subtree: true, childList: true });
    }, { capture: true });
  });
  await tab.setInputFiles("#input", path);
  await tab.waitForFunction(() => "all views" in globalThis.seen, null, { polling: 200, timeout: 600_000 });
  const seen = await tab.evaluate(() => globalThis.seen);
  await close();
  return seen;
}

/** Processor seconds of the module, whose text goes nowhere. */
async function converting(path) {
  const module = await createModule({ wasmBinary, thisProgram: "gzdconv", print() {}, printErr() {} });
  const { FS } = module;
  FS.createDataFile("/", "hour.gzd", readFileSync(path), true, false, true);
  const { file } = FS.filesystems.MEMFS.ops_table ?? {};
  const operations = file?.stream ?? FS.filesystems.MEMFS.stream_ops;
  const room = new Uint8Array(1 << 20);
  operations.write = (stream, buffer, offset, length, place) => {
    room.set(buffer.subarray(offset, offset + length));
    stream.node.usedBytes = place + length;
    return length;
  };
  const before = process.cpuUsage();
  module.callMain(["hour.gzd"]);
  const { user, system } = process.cpuUsage(before);
  return (user + system) / 1e6;
}

/** Processor seconds of gzdconv, start included, whose text goes nowhere either. */
function convertingHere(path) {
  const nowhere = `${path}.null`;
  const line = `ln -sfn /dev/null ${nowhere}.asc
    TIMEFORMAT='%U %S'; time ${process.env.GZD_BIN}/gzdconv/gzdconv -y ${path} ${nowhere} >&- 2>&-`;
  const told = spawnSync("bash", ["-c", line], { encoding: "utf8" }).stderr;
  return told.trim().split(" ").map(Number).reduce((sum, part) => sum + part, 0);
}

const path = makeRecording("hour.gzd", ["--duration", seconds, "--trials", "60"]);
const openings = [], ratios = [];
for (let round = 0; round < rounds; ++round) {
  openings.push(await opening(path));
  ratios.push((await converting(path)) / convertingHere(path));
}
for (const name of Object.keys(openings[0]))
  console.log(`${name}: ${median(openings.map((seen) => seen[name])).toFixed(2)} s`);
console.log(`converting: ${median(ratios).toFixed(2)} times the processor time of gzdconv`);
removeWork();
