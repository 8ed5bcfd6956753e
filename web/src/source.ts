// Where a view gets a recording from: a worker that has the file, or the data inside a report.
import type { Calls, CallName, Answer, Check, Converted, Facts, Summary, TraceWindow, TrialRule } from "./protocol";
import { unpacked } from "./packed";

export interface Source {
  readonly facts: Facts;
  check(): Promise<Check>;
  summary(): Promise<Summary>;
  window(from: number, to: number, columns: number): Promise<TraceWindow>;
  /** A table as TSV. */
  table(name: string): Promise<string>;
  /** The ASC text; there is none where the file is not at hand. */
  readonly convert?: (options: string[], progress: (share: number) => void) => Promise<Converted>;
  readonly hasTrialRule: boolean;
  close(): void;
}

interface Engine {
  code: string;
  wasm: ArrayBuffer;
}

let engine: Promise<Engine> | null = null;

function loadEngine(): Promise<Engine> {
  engine ??= Promise.all([unpacked("worker"), unpacked("module")]).then(([code, wasm]) => ({
    code: new TextDecoder().decode(code),
    wasm,
  }));
  return engine;
}

/** A worker of the page's own, spoken to by questions and answers. */
class Colleague {
  private readonly waiting = new Map<
    number,
    { resolve: (value: never) => void; reject: (error: Error) => void }
  >();
  private last = 0;

  private constructor(
    private readonly worker: Worker,
    progress: (share: number) => void,
  ) {
    worker.onmessage = (event: MessageEvent<Answer>) => {
      const answer = event.data;
      if ("progress" in answer) return progress(answer.progress);
      const asked = this.waiting.get(answer.id);
      this.waiting.delete(answer.id);
      if ("error" in answer) asked?.reject(new Error(answer.error));
      else asked?.resolve(answer.gives as never);
    };
    worker.onerror = (event) => {
      event.preventDefault();
      this.refuse(event.message);
    };
  }

  static async hire(progress: (share: number) => void): Promise<Colleague> {
    const { code, wasm } = await loadEngine();
    const address = URL.createObjectURL(new Blob([code], { type: "text/javascript" }));
    const colleague = new Colleague(new Worker(address), progress);
    await colleague.ask("load", { wasm });
    URL.revokeObjectURL(address);
    return colleague;
  }

  ask<Name extends CallName>(name: Name, takes: Calls[Name]["takes"]): Promise<Calls[Name]["gives"]> {
    const id = ++this.last;
    return new Promise((resolve, reject) => {
      this.waiting.set(id, { resolve, reject });
      this.worker.postMessage({ id, name, takes });
    });
  }

  dismiss(): void {
    this.worker.terminate();
    this.refuse("closed");
  }

  private refuse(reason: string): void {
    for (const { reject } of this.waiting.values()) reject(new Error(reason));
    this.waiting.clear();
  }
}

/** Opens a file of the user's. Throws what the library tells when it cannot be read, or `task` is called off. */
export async function openFile(
  file: File,
  rule: TrialRule,
  progress: (share: number) => void,
  task: AbortSignal,
): Promise<Source> {
  const colleague = await Colleague.hire(progress);
  let facts: Facts;
  try {
    task.addEventListener("abort", () => colleague.dismiss());
    task.throwIfAborted();
    facts = await colleague.ask("open", { file, rule });
  } catch (error) {
    colleague.dismiss();
    throw error;
  }
  const check = colleague.ask("check", null);
  const summary = colleague.ask("summary", null);
  summary.catch(() => undefined); // told when it is asked for
  return {
    facts,
    hasTrialRule: true,
    check: () => check,
    summary: () => summary,
    window: (from, to, columns) => colleague.ask("window", { from, to, columns }),
    table: (name) => colleague.ask("table", { name }),
    convert: (options, told) => convertFile(file, options, told),
    close: () => colleague.dismiss(),
  };
}

async function convertFile(
  file: File,
  options: string[],
  progress: (share: number) => void,
): Promise<Converted> {
  const colleague = await Colleague.hire(progress);
  try {
    return await colleague.ask("convert", { file, options });
  } finally {
    colleague.dismiss();
  }
}
