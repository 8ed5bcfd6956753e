// The module without a browser: its texts are gzdconv's, and what that costs.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { after, test } from "node:test";
import { inWork, makeRecording, removeWork, run, withoutDate } from "./support.mjs";

const createModule = createRequire(import.meta.url)(process.env.GZD_MODULE);
const wasmBinary = readFileSync(process.env.GZD_MODULE.replace(/js$/, "wasm"));
after(removeWork);

async function converted(file, ...options) {
  const said = [];
  const module = await createModule({ wasmBinary, thisProgram: "gzdconv", print: (line) => said.push(line), printErr: (line) => said.push(line) });
  module.FS.mkdir("/work");
  module.FS.chdir("/work");
  module.FS.writeFile("r.gzd", readFileSync(inWork(file)));
  assert.equal(module.callMain([...options, "r.gzd"]), 0, said.join("\n"));
  return Buffer.from(module.FS.readFile("r.asc")).toString("latin1");
}

const recordings = [
  ["gaze at 1000 Hz", []],
  ["2000 Hz, compressed, gaps", ["--rate", "2000", "--zip", "--gap", "40"]],
  ["target, all positions", ["--generation", "3", "--target", "--coords", "gaze,href,raw"]],
  ["head pose", ["--generation", "4", "--pose", "--ellipse", "72"]],
  ["old tracker", ["--generation", "1", "--rate", "250", "--eyes", "left"]],
];

for (const [name, words] of recordings)
  test(`texts of the module are those of gzdconv: ${name}`, async () => {
    makeRecording("r.gzd", ["--duration", "5", ...words]);
    for (const options of [[], ["-res", "-vel", "-ftime", "-input"], ["-sh", "-fp", "3", "-s"]]) {
      run("gzdconv", "-y", ...options, "r.gzd");
      const here = readFileSync(inWork("r.asc"), "latin1").replace("ARGUMENTS USED: -y ", "ARGUMENTS USED: ");
      assert.equal(withoutDate(await converted("r.gzd", ...options)), withoutDate(here), options.join(" "));
    }
  });
