// Puts bundles and module into files that stand alone, under a policy that allows no request:
//
//   node assemble.mjs TEMPLATE BUNDLES OUT [GLUE WASM]
//
// OUT/report.html becomes a report when a recording is put in the place of @RECORDING@. With the
// module OUT/index.html is written too, which opens recordings.
import { createHash } from "node:crypto";
import { mkdirSync, readFileSync, readdirSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { gzipSync } from "node:zlib";

const [template, bundles, out, glue, wasm] = process.argv.slice(2);

const read = (...path) => readFileSync(join(...path), "utf8");
const sourceHash = (text) => `'sha256-${createHash("sha256").update(text).digest("base64")}'`;

function styleOf(directory) {
  const names = readdirSync(directory).filter((name) => name.endsWith(".css"));
  return names.map((name) => read(directory, name)).join("\n");
}

// What would end the element early is written in another way.
function scriptOf(directory) {
  return read(directory, "page.js").replaceAll("</script", "<\\/script").trim();
}

function packed(name, content) {
  return `<script type="application/gzip" id="packed-${name}">${content}</script>`;
}

function packedBytes(name, bytes) {
  return packed(name, gzipSync(bytes, { level: 9 }).toString("base64"));
}

const style = styleOf(join(bundles, "page"));
const script = scriptOf(join(bundles, "page"));
const html = read(template);

function page(extraSources, data) {
  const policy = [
    "default-src 'none'",
    `script-src ${sourceHash(script)}${extraSources}`,
    "worker-src blob:",
    `style-src ${sourceHash(style)}`,
    "img-src data: blob:",
    "base-uri 'none'",
    "form-action 'none'",
  ].join("; ");
  const parts = { POLICY: policy, STYLE: style, SCRIPT: script, PACKED: data };
  return html.replace(/@(POLICY|STYLE|SCRIPT|PACKED)@/g, (_, name) => parts[name]);
}

mkdirSync(out, { recursive: true });
writeFileSync(join(out, "report.html"), page("", packed("recording", "@RECORDING@")));
if (glue !== undefined) {
  const worker = Buffer.from(read(glue) + "\n" + read(bundles, "worker", "worker.js"));
  const data = [packedBytes("worker", worker), packedBytes("module", readFileSync(wasm))].join("\n");
  writeFileSync(join(out, "index.html"), page(" 'wasm-unsafe-eval'", data));
}
