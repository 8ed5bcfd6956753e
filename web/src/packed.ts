// Data blocks of the page's file: gzip, written in base64.

function blockNamed(name: string): HTMLElement | null {
  return document.getElementById(`packed-${name}`);
}

export function isPacked(name: string): boolean {
  return blockNamed(name) !== null;
}

/** The bytes of the block of that name. */
export async function unpacked(name: string): Promise<ArrayBuffer> {
  const text = blockNamed(name)?.textContent;
  if (!text) throw new Error(`the page has no ${name}`);
  const bytes = Uint8Array.from(atob(text.trim()), (letter) => letter.charCodeAt(0));
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("gzip"));
  return new Response(stream).arrayBuffer();
}
