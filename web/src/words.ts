// Numbers and sentences for people.

const whole = new Intl.NumberFormat("en", { maximumFractionDigits: 1 });

export function told(number: number): string {
  return whole.format(number);
}

export function counted(count: number, one: string): string {
  return `${told(count)} ${one}${count === 1 ? "" : "s"}`;
}

export function share(part: number, all: number): string {
  return all > 0 ? `${((100 * part) / all).toFixed(1)} %` : "–";
}

/** A length of time (ms) in the unit that reads best. */
export function lasting(ms: number): string {
  if (ms < 1000) return `${told(ms)} ms`;
  const seconds = ms / 1000;
  if (seconds < 120) return `${seconds.toFixed(1)} s`;
  const minutes = Math.floor(seconds / 60);
  return `${minutes} min ${(seconds - 60 * minutes).toFixed(0)} s`;
}

/** Bytes in the unit that reads best. */
export function sized(bytes: number): string {
  if (bytes < 1e6) return `${told(bytes / 1e3)} kB`;
  return `${told(bytes / 1e6)} MB`;
}
