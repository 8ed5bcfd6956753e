// The worker: it has the recording, and answers the page one question after the other.
import {
  keepInPieces,
  mountFile,
  startModule,
  textAt,
  textIn,
  withTexts,
  type Module,
} from "./module";
import { curveNames, type Answer, type Calls, type CallName, type Question } from "./protocol";

type Handlers = {
  [Name in CallName]: (takes: Calls[Name]["takes"]) => Promise<Calls[Name]["gives"]>;
};

let wasm: ArrayBuffer | null = null;
let current: Module | null = null;

function tell(answer: Answer, transfer: Transferable[] = []): void {
  self.postMessage(answer, { transfer });
}

/** Tells the page now and then how much of the file has been read. */
function progressOf(file: File): (bytes: number) => void {
  let told = 0;
  return (bytes) => {
    const share = Math.min(1, bytes / Math.max(1, file.size));
    if (share < told + 0.02) return;
    told = share;
    tell({ progress: share });
  };
}

async function freshModule(said: (line: string) => void): Promise<Module> {
  if (wasm === null) throw new Error("the module is not loaded");
  return startModule({ wasmBinary: wasm, thisProgram: "gzdconv", print: said, printErr: said });
}

function opened(): Module {
  if (current === null) throw new Error("no recording is open");
  return current;
}

const texts = "/texts"; // where the converter writes
const extension = /\.gzd$/i;

const handlers: Handlers = {
  async load({ wasm: bytes }) {
    wasm = bytes;
    return null;
  },

  async open({ file, rule }) {
    current = null;
    const module = await freshModule(() => undefined);
    const path = mountFile(module, file, progressOf(file));
    const status = withTexts(module, [path, rule.start, rule.end], module._page_open);
    if (status !== 0) throw new Error(module.UTF8ToString(module._page_error()));
    current = module;
    return { ...JSON.parse(textAt(module, module._page_facts())), file: file.name };
  },

  async check() {
    return JSON.parse(textAt(opened(), opened()._page_check()));
  },

  async summary() {
    return JSON.parse(textAt(opened(), opened()._page_trace()));
  },

  async window({ from, to, columns }) {
    const module = opened();
    const count = module._page_window(from, to, columns);
    const at = module._page_window_times() / 8;
    const times = module.HEAPF64.slice(at, at + count);
    const low: Float32Array[] = [];
    const high: Float32Array[] = [];
    curveNames.forEach((_, curve) => {
      const place = module._page_window_values(curve) / 4;
      const pairs = module.HEAPF32.subarray(place, place + 2 * count);
      low.push(Float32Array.from({ length: count }, (_, i) => pairs[2 * i] ?? NaN));
      high.push(Float32Array.from({ length: count }, (_, i) => pairs[2 * i + 1] ?? NaN));
    });
    return { times, low, high };
  },

  async table({ name }) {
    const module = opened();
    return withTexts(module, [name], (place) => textAt(module, module._page_table(place)));
  },

  async convert({ file, options }) {
    const said: string[] = [];
    const module = await freshModule((line) => said.push(line));
    const path = mountFile(module, file, progressOf(file));
    const { FS } = module;
    FS.mkdir(texts);
    FS.symlink(path, `${texts}/${file.name}`);
    FS.chdir(texts);
    keepInPieces(module, (name) => name.includes(".asc"));
    const named = file.name.startsWith("-") ? `./${file.name}` : file.name;
    const status = module.callMain([...options, named]);
    return { status, said, text: textIn(module, `${texts}/${file.name.replace(extension, "")}.asc`) };
  },
};

function reasonOf(error: unknown): string {
  if (error instanceof WebAssembly.RuntimeError || error instanceof RangeError)
    return `not enough memory, or a fault of this page (${error.message})`;
  return error instanceof Error ? error.message : String(error);
}

async function answer<Name extends CallName>(question: Question<Name>): Promise<void> {
  const { id, name, takes } = question;
  try {
    tell({ id, gives: await handlers[name](takes) });
  } catch (error) {
    tell({ id, error: reasonOf(error) });
  }
}

let queue: Promise<void> = Promise.resolve();
self.onmessage = (event: MessageEvent<Question>) => {
  queue = queue.then(() => answer(event.data));
};
