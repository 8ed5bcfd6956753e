// A recording as a report holds it: everything is in the page's file, the trace reduced.
import { unpacked } from "./packed";
import type { Check, Facts, Summary, TraceWindow } from "./protocol";
import type { Source } from "./source";

interface Report {
  facts: Facts;
  check: Check;
  summary: Summary;
  trace: { times: number[]; low: (number | null)[][]; high: (number | null)[][] };
  tables: Record<string, string>;
}

/** The points of a window, and one more on either side. */
function cut({ times, low, high }: Report["trace"], from: number, to: number): TraceWindow {
  const inside = times.findIndex((time) => time >= from);
  const behind = times.findIndex((time) => time > to);
  const begin = Math.max(0, (inside < 0 ? times.length : inside) - 1);
  const end = behind < 0 ? times.length : behind + 1;
  const piece = (values: (number | null)[]) => values.slice(begin, end);
  return { times: times.slice(begin, end), low: low.map(piece), high: high.map(piece) };
}

export async function openReport(): Promise<Source> {
  const text = new TextDecoder().decode(await unpacked("recording"));
  const report = JSON.parse(text) as Report;
  return {
    facts: report.facts,
    hasTrialRule: false,
    check: async () => report.check,
    summary: async () => report.summary,
    window: async (from, to) => cut(report.trace, from, to),
    table: async (name) => report.tables[name] ?? "",
    close: () => undefined,
  };
}
