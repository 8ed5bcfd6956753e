// The WebAssembly module as a thing with types: texts in and out, files, the converter's main.

/** A file system node, as far as it is used here. */
interface FileNode {
  name: string;
  text?: GrowingText;
  usedBytes: number;
}

interface StreamOperations {
  read(stream: unknown, buffer: Uint8Array, offset: number, length: number, place: number): number;
  write(
    stream: { node: FileNode },
    buffer: Uint8Array,
    offset: number,
    length: number,
    place: number,
  ): number;
}

interface FileSystem {
  mkdir(path: string): void;
  mount(type: unknown, options: unknown, path: string): void;
  symlink(target: string, path: string): void;
  chdir(path: string): void;
  writeFile(path: string, bytes: Uint8Array): void;
  analyzePath(path: string): { exists: boolean };
  lookupPath(path: string): { node: FileNode };
  filesystems: {
    MEMFS: { stream_ops: StreamOperations; ops_table: { file: { stream: StreamOperations } } | null };
    WORKERFS: { stream_ops: StreamOperations };
  };
}

export interface Module {
  FS: FileSystem;
  WORKERFS: unknown;
  HEAPU8: Uint8Array;
  HEAPF32: Float32Array;
  HEAPF64: Float64Array;
  callMain(words: string[]): number;
  UTF8ToString(place: number): string;
  stringToUTF8(text: string, place: number, room: number): void;
  lengthBytesUTF8(text: string): number;
  _malloc(bytes: number): number;
  _free(place: number): void;
  _page_open(path: number, trialStart: number, trialEnd: number): number;
  _page_error(): number;
  _page_facts(): number;
  _page_check(): number;
  _page_trace(): number;
  _page_table(name: number): number;
  _page_window(from: number, to: number, columns: number): number;
  _page_window_times(): number;
  _page_window_values(curve: number): number;
}

export interface ModuleOptions {
  wasmBinary: ArrayBuffer;
  thisProgram?: string;
  print?: (line: string) => void;
  printErr?: (line: string) => void;
}

/** Made by the compiler's own script, which stands before the worker's. */
declare const createModule: (options: ModuleOptions) => Promise<Module>;

export function startModule(options: ModuleOptions): Promise<Module> {
  return createModule(options);
}

/** Calls `use` with places of texts in the module's memory. */
export function withTexts<Result>(
  module: Module,
  texts: string[],
  use: (...places: number[]) => Result,
): Result {
  const places = texts.map((text) => {
    const room = module.lengthBytesUTF8(text) + 1;
    const place = module._malloc(room);
    module.stringToUTF8(text, place, room);
    return place;
  });
  try {
    return use(...places);
  } finally {
    places.forEach((place) => module._free(place));
  }
}

/** The text at a place; throws what went wrong when there is none. */
export function textAt(module: Module, place: number): string {
  if (place === 0) throw new Error(module.UTF8ToString(module._page_error()));
  return module.UTF8ToString(place);
}

/** Workers have it, and the types of pages do not. */
declare class FileReaderSync {
  readAsArrayBuffer(piece: Blob): ArrayBuffer;
}

const chunkBytes = 4 << 20;
const mostChunks = 128; // half a gigabyte

/** Reads a file in chunks and keeps those used last: each reading costs, and the library reads by the kilobyte. */
function readerOf(file: File): (buffer: Uint8Array, offset: number, length: number, place: number) => number {
  const disk = new FileReaderSync();
  const chunks = new Map<number, Uint8Array>();
  const chunkAt = (number: number): Uint8Array => {
    const chunk = chunks.get(number) ??
      new Uint8Array(disk.readAsArrayBuffer(file.slice(number * chunkBytes, (number + 1) * chunkBytes)));
    chunks.delete(number);
    chunks.set(number, chunk);
    const [oldest = number] = chunks.keys();
    if (chunks.size > mostChunks) chunks.delete(oldest);
    return chunk;
  };
  return (buffer, offset, length, place) => {
    const end = Math.min(place + length, file.size);
    for (let at = place; at < end; ) {
      const from = at % chunkBytes;
      const piece = chunkAt(Math.floor(at / chunkBytes)).subarray(from, from + end - at);
      if (piece.length === 0) throw new Error("the file became shorter while it was read");
      buffer.set(piece, offset + at - place);
      at += piece.length;
    }
    return Math.max(0, end - place);
  };
}

/** Makes `file` readable in the folder "/in", and tells how many of its bytes have been read. */
export function mountFile(module: Module, file: File, told: (bytes: number) => void): string {
  const { FS } = module;
  const read = readerOf(file);
  FS.filesystems.WORKERFS.stream_ops.read = (_, buffer, offset, length, place) => {
    told(place + length);
    return read(buffer, offset, length, place);
  };
  FS.mkdir("/in");
  FS.mount(module.WORKERFS, { files: [file] }, "/in");
  return `/in/${file.name}`;
}

const heldBytes = 16 << 20;

/** A text that grows: one array would be copied again and again, and blobs a browser puts aside. */
class GrowingText {
  private readonly parts: Blob[] = [];
  private readonly held = new Uint8Array(heldBytes);
  private bytes = 0;

  append(piece: Uint8Array): void {
    for (let at = 0; at < piece.length; ) {
      const part = piece.subarray(at, at + heldBytes - this.bytes);
      this.held.set(part, this.bytes);
      this.bytes += part.length;
      at += part.length;
      if (this.bytes === heldBytes) this.putAside();
    }
  }

  private putAside(): void {
    this.parts.push(new Blob([this.held.subarray(0, this.bytes)]));
    this.bytes = 0;
  }

  whole(): Blob {
    this.putAside();
    return new Blob(this.parts, { type: "text/plain" });
  }
}

/** What was written to a file whose texts are kept in pieces; null when there is none. */
export function textIn({ FS }: Module, path: string): Blob | null {
  return FS.analyzePath(path).exists ? (FS.lookupPath(path).node.text?.whole() ?? null) : null;
}

/** Keeps what is written to files of such names out of the module's memory. */
export function keepInPieces(module: Module, isText: (name: string) => boolean): void {
  const memory = module.FS.filesystems.MEMFS;
  const operations = memory.ops_table?.file.stream ?? memory.stream_ops;
  const plainWrite = operations.write;
  operations.write = (stream, buffer, offset, length, place) => {
    const { node } = stream;
    if (!isText(node.name)) return plainWrite(stream, buffer, offset, length, place);
    node.text ??= new GrowingText();
    if (place !== node.usedBytes) throw new Error("a text is written from front to end");
    node.text.append(buffer.subarray(offset, offset + length));
    node.usedBytes = place + length;
    return length;
  };
}
