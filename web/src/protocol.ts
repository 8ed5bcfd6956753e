// What is told of a recording, and how the page and its worker speak of it. Times are milliseconds
// of the tracker's clock.

export interface Finding {
  kind: string;
  eye: string | null;
  start: number | null;
  end: number | null;
  text: string;
}

export interface Block {
  start: number;
  end: number | null;
  rate: number;
  eyes: string | null;
  samples: number;
  filled: number;
}

/** The facts of `gzdtool info --json`, and the blocks. */
export interface Facts {
  file: string;
  bytes: number;
  compressed: boolean;
  preamble: string[];
  date: string | null;
  generation: number;
  revision: number;
  duration: number | null;
  elements: Record<
    "samples" | "fixations" | "saccades" | "blinks" | "messages" | "buttons" | "inputs" | "blocks",
    number
  >;
  display: [number, number, number, number] | null;
  calibrations: { time: number; text: string }[];
  validations: { time: number; text: string }[];
  damaged_at: number | null;
  findings: Finding[];
  blocks: Block[];
}

export interface BlockCheck {
  start: number;
  end: number | null;
  samples: number;
  expected: number;
  left_lost: number | null;
  right_lost: number | null;
}

/** What `gzdtool check --json` tells. */
export interface Check {
  state: "sound" | "lossy";
  findings: Finding[];
  blocks: BlockCheck[];
}

export type Span = [number, number];

/** What holds for all samples; `loss` counts samples in equal stretches of time. */
export interface Summary {
  first: number;
  last: number;
  samples: number;
  curves: boolean[];
  loss: Record<"recorded" | "filled" | "left" | "right", number[]>;
  filled: Span[];
  gaps: Span[];
}

/** Points of curves: left x, y, pupil, right x, y, pupil; NaN where a curve is interrupted. */
export interface TraceWindow {
  times: ArrayLike<number>;
  low: ArrayLike<number | null>[];
  high: ArrayLike<number | null>[];
}

export const curveNames = ["left x", "left y", "left pupil", "right x", "right y", "right pupil"];

export interface TrialRule {
  start: string;
  end: string;
}

/** A text that the converter made, or what it said instead. */
export interface Converted {
  status: number;
  said: string[];
  text: Blob | null;
}

/** Questions to the worker, by name: what they take, and what comes back. */
export interface Calls {
  load: { takes: { wasm: ArrayBuffer }; gives: null };
  open: { takes: { file: File; rule: TrialRule }; gives: Facts };
  check: { takes: null; gives: Check };
  summary: { takes: null; gives: Summary };
  window: { takes: { from: number; to: number; columns: number }; gives: TraceWindow };
  table: { takes: { name: string }; gives: string };
  convert: { takes: { file: File; options: string[] }; gives: Converted };
}

export type CallName = keyof Calls;

export interface Question<Name extends CallName = CallName> {
  id: number;
  name: Name;
  takes: Calls[Name]["takes"];
}

export type Answer =
  | { id: number; gives: unknown }
  | { id: number; error: string }
  | { progress: number };
