// Two uPlot drawings over one stretch of time: gaze above, pupil below, marks behind and over them.
import uPlot from "uplot";
import "uplot/dist/uPlot.min.css";
import { styleValue } from "../dom";
import type { Span, TraceWindow } from "../protocol";
import type { Moment } from "../places";

/** What is marked in the drawings, from the ground up. */
export interface Marks {
  trials: Span[];
  gaps: Span[];
  filled: Span[];
  blinks: Span[];
  messages: Moment[];
  presses: Moment[];
}

interface Drawing {
  curves: number[];
  label: string;
}

const drawings: Drawing[] = [
  { curves: [0, 1, 3, 4], label: "gaze (px)" },
  { curves: [2, 5], label: "pupil" },
];
const colourNames = ["left", "left-y", "left", "right", "right-y", "right"];
const dashed = [1, 4];
const labels = ["left x", "left y", "left pupil", "right x", "right y", "right pupil"];

/** Low and high values one after the other at the same time: a line through them fills the extent. */
function zigzag(window: TraceWindow, curves: number[]): uPlot.AlignedData {
  const count = window.times.length;
  const times = Array.from({ length: 2 * count }, (_, i) => (window.times[i >> 1] ?? 0) / 1000);
  const values = curves.map((curve) =>
    Array.from({ length: 2 * count }, (_, i) => {
      const value = (i % 2 === 0 ? window.low : window.high)[curve]?.[i >> 1];
      return value === undefined || value === null || Number.isNaN(value) ? null : value;
    }),
  );
  return [times, ...values];
}

function shade(plot: uPlot, spans: Span[], colour: string): void {
  const { ctx: pen, bbox } = plot;
  const { min = 0, max = 0 } = plot.scales["x"] ?? {};
  pen.fillStyle = styleValue(colour);
  for (const [start, end] of spans) {
    if (end / 1000 < min || start / 1000 > max) continue;
    const left = Math.max(plot.valToPos(start / 1000, "x", true), bbox.left);
    const right = Math.min(plot.valToPos(end / 1000, "x", true), bbox.left + bbox.width);
    pen.fillRect(left, bbox.top, Math.max(1, right - left), bbox.height);
  }
}

const mostTicks = 2000;

/** Ticks at the top, with their texts as far as these do not run into each other. */
function tick(plot: uPlot, moments: Moment[], colour: string, line: number): void {
  const { ctx: pen, bbox } = plot;
  const { min = 0, max = 0 } = plot.scales["x"] ?? {};
  const inside = moments.filter(({ time }) => time / 1000 >= min && time / 1000 <= max);
  pen.fillStyle = styleValue(colour);
  pen.font = `${11 * devicePixelRatio}px sans-serif`;
  pen.textAlign = "left";
  let free = bbox.left;
  for (const { time, text } of inside.slice(0, mostTicks)) {
    const place = plot.valToPos(time / 1000, "x", true);
    pen.fillRect(place, bbox.top, devicePixelRatio, bbox.height / 12);
    const label = text.slice(0, 30);
    if (place < free || bbox.height < 200 * devicePixelRatio) continue;
    pen.fillText(label, place + 3, bbox.top + 14 * line * devicePixelRatio);
    free = place + pen.measureText(label).width + 8 * devicePixelRatio;
  }
}

function marksPlugin(marks: Marks): uPlot.Plugin {
  const clipped = (plot: uPlot, draw: () => void): void => {
    plot.ctx.save();
    plot.ctx.beginPath();
    plot.ctx.rect(plot.bbox.left, plot.bbox.top, plot.bbox.width, plot.bbox.height);
    plot.ctx.clip();
    draw();
    plot.ctx.restore();
  };
  return {
    hooks: {
      drawClear: (plot) =>
        clipped(plot, () => {
          shade(plot, marks.trials.filter((_, i) => i % 2 === 0), "--trial");
          shade(plot, marks.gaps, "--gap");
          shade(plot, marks.filled, "--filled");
          shade(plot, marks.blinks, "--blink");
        }),
      draw: (plot) =>
        clipped(plot, () => {
          tick(plot, marks.messages, "--message", 1);
          tick(plot, marks.presses, "--press", 2);
        }),
    },
  };
}

function seriesOf(curve: number): uPlot.Series {
  return {
    label: labels[curve] ?? "",
    stroke: () => styleValue(`--${colourNames[curve]}`),
    width: 1,
    ...(dashed.includes(curve) ? { dash: [5, 3] } : {}),
    points: { show: false },
    value: (_, value) => (value === null ? "–" : value.toFixed(1)),
  };
}

export class Curves {
  private readonly plots: uPlot[];
  private readonly shown: Drawing[];
  private isSetting = false;

  constructor(
    private readonly place: HTMLElement,
    present: boolean[],
    marks: Marks,
    private readonly chosen: (from: number, to: number) => void,
  ) {
    this.shown = drawings
      .map(({ curves, label }) => ({ label, curves: curves.filter((curve) => present[curve]) }))
      .filter(({ curves }) => curves.length > 0);
    this.plots = this.shown.map((drawing) => this.plotOf(drawing, marks));
  }

  get width(): number {
    return Math.max(280, this.place.clientWidth);
  }

  private plotOf({ curves, label }: Drawing, marks: Marks): uPlot {
    const ink = () => styleValue("--ink");
    const grid = { stroke: () => styleValue("--faint"), width: 1 };
    const options: uPlot.Options = {
      width: this.width,
      height: this.heightOf(curves),
      scales: { x: { time: false } },
      axes: [
        { stroke: ink, grid, ticks: grid, label: "time (s)", labelSize: 20 },
        { stroke: ink, grid, ticks: grid, label, labelSize: 20, size: 60 },
      ],
      series: [{ label: "time (s)" }, ...curves.map(seriesOf)],
      cursor: { sync: { key: "gzdpage" }, drag: { x: true, y: false, setScale: false } },
      legend: { markers: { dash: (_, series) => (dashed.includes(curves[series - 1] ?? 0) ? "dashed" : "solid") } },
      plugins: [marksPlugin(marks)],
      hooks: {
        setSelect: [(plot) => this.takeSelection(plot)],
      },
    };
    return new uPlot(options, [[], ...curves.map(() => [])] as uPlot.AlignedData, this.place);
  }

  private heightOf(curves: number[]): number {
    return curves.length > 0 && curves.every((curve) => curve % 3 === 2) ? 190 : 330;
  }

  private takeSelection(plot: uPlot): void {
    const { left, width } = plot.select;
    if (this.isSetting || width < 4) return;
    this.isSetting = true;
    plot.setSelect({ left: 0, top: 0, width: 0, height: 0 }, false);
    this.isSetting = false;
    this.chosen(plot.posToVal(left, "x") * 1000, plot.posToVal(left + width, "x") * 1000);
  }

  /** The time under a pointer (ms). */
  timeAt(clientX: number): number {
    const plot = this.plots[0];
    if (plot === undefined) return 0;
    return plot.posToVal(clientX - plot.over.getBoundingClientRect().left, "x") * 1000;
  }

  draw(window: TraceWindow, from: number, to: number): void {
    this.plots.forEach((plot, i) => {
      plot.batch(() => {
        plot.setData(zigzag(window, this.shown[i]?.curves ?? []), true);
        plot.setScale("x", { min: from / 1000, max: to / 1000 });
      });
    });
  }

  fit(): void {
    this.plots.forEach((plot, i) =>
      plot.setSize({ width: this.width, height: this.heightOf(this.shown[i]?.curves ?? []) }));
  }

  redraw(): void {
    this.plots.forEach((plot) => plot.redraw());
  }

  destroy(): void {
    this.plots.forEach((plot) => plot.destroy());
  }
}
