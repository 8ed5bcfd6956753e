// Stretches and moments of a recording that views mark: blinks, trials, messages, buttons.
import type { Source } from "./source";
import type { Span, Summary } from "./protocol";
import { cellNumber, cellText, columnsOf, parse, type Table } from "./tsv";

export interface Moment {
  time: number;
  text: string;
}

export interface Trial {
  number: number;
  start: number;
  end: number;
  text: string;
}

export interface Places {
  blinks: Span[];
  trials: Trial[];
  messages: Moment[];
  presses: Moment[];
}

async function tableOf(source: Source, name: string): Promise<Table> {
  return parse(await source.table(name));
}

function spansOf(table: Table): Span[] {
  const [onset, offset] = columnsOf(table, "onset", "offset");
  return table.rows.map((row) => [cellNumber(onset?.(row)), cellNumber(offset?.(row))]);
}

function trialsOf(table: Table, last: number): Trial[] {
  const [number, start, end, text] = columnsOf(table, "trial", "start", "end", "start_text");
  return table.rows.map((row) => {
    const ended = cellNumber(end?.(row));
    return {
      number: cellNumber(number?.(row)),
      start: cellNumber(start?.(row)),
      end: Number.isNaN(ended) ? last : ended,
      text: cellText(text?.(row)),
    };
  });
}

function messagesOf(table: Table): Moment[] {
  const [time, text] = columnsOf(table, "time", "text");
  return table.rows.map((row) => ({ time: cellNumber(time?.(row)), text: cellText(text?.(row)) }));
}

function pressesOf(table: Table): Moment[] {
  const [time, kind, number, value] = columnsOf(table, "time", "type", "button", "value");
  return table.rows
    .filter((row) => kind?.(row) === "button")
    .map((row) => ({
      time: cellNumber(time?.(row)),
      text: `button ${number?.(row)} ${value?.(row) === "1" ? "pressed" : "released"}`,
    }));
}

export async function placesOf(source: Source, last: number): Promise<Places> {
  const table = (name: string) => tableOf(source, name);
  return {
    blinks: spansOf(await table("blinks")),
    trials: trialsOf(await table("trials"), last),
    messages: messagesOf(await table("messages")),
    presses: pressesOf(await table("inputs")),
  };
}

/** The summary with the time of messages and trials when there are no samples. */
export function withTimes(summary: Summary, places: Places): Summary {
  if (summary.samples > 0) return summary;
  const times = [...places.messages.map(({ time }) => time), ...places.trials.map(({ start }) => start)];
  if (times.length === 0) return summary;
  const [first, last] = [Math.min, Math.max].map((pick) => times.reduce((a, b) => pick(a, b)));
  return { ...summary, first: first ?? 0, last: last ?? 0 };
}
