// The trace: curves over time, and the ways through them by pointer, wheel, keys and fields.
import { button, labelled, make } from "../dom";
import type { Places } from "../places";
import type { Summary } from "../protocol";
import type { Source } from "../source";
import { Curves } from "./curves";

const shortest = 20; // ms
const keyStep = 0.25;
const zoomStep = 2;

const legend: [string, string][] = [
  ["trial", "every other trial"],
  ["gap", "samples are missing"],
  ["filled", "filled in by the library"],
  ["blink", "blink"],
  ["message", "message"],
  ["press", "button"],
];

export class TraceView {
  readonly element: HTMLElement;
  private readonly told = make("p", { class: "hint", "aria-live": "polite", "data-window": "" });
  private readonly place = make("div", {
    class: "curves",
    tabindex: "0",
    role: "group",
    "aria-label": "Trace. Arrow keys move, plus and minus zoom, Home shows all.",
  });
  private curves: Curves | null = null;
  private from: number;
  private to: number;
  private asked = 0;

  constructor(
    private readonly source: Source,
    private readonly summary: Summary,
    private readonly places: Places,
  ) {
    this.from = summary.first;
    this.to = Math.max(summary.last, summary.first + shortest);
    if (!summary.curves.some(Boolean)) this.place.append(make("p", {}, "No positions were recorded."));
    this.element = make("section", { "aria-label": "Trace" }, this.controls(), this.told, this.place, this.legend());
    this.place.addEventListener("keydown", (event) => this.takeKey(event));
    this.place.addEventListener("wheel", (event) => this.takeWheel(event), { passive: false });
    new ResizeObserver(() => this.fit()).observe(this.place);
  }

  /** Draws at the first time it is seen, as only then it has a width. */
  show(from = this.from, to = this.to): void {
    const { gaps, filled, curves } = this.summary;
    const { trials, ...others } = this.places;
    const spans = trials.map(({ start, end }): [number, number] => [start, end]);
    this.curves ??= new Curves(this.place, curves, { ...others, trials: spans, gaps, filled }, (a, b) => this.show(a, b));
    const { first, last } = this.summary;
    const length = Math.min(Math.max(to - from, shortest), Math.max(last - first, shortest));
    this.from = Math.min(Math.max(from, first), Math.max(last, first + shortest) - length);
    this.to = this.from + length;
    void this.draw();
  }

  /** Shows a stretch with something around it. */
  showPlace(from: number, to: number): void {
    const margin = Math.max((to - from) / 4, 500);
    this.show(from - margin, to + margin);
  }

  recolour(): void {
    this.curves?.redraw();
  }

  private async draw(): Promise<void> {
    const number = ++this.asked;
    const { from, to } = this;
    const window = await this.source.window(from, to, Math.round((this.curves?.width ?? 300) / 1.5));
    if (number !== this.asked) return;
    this.curves?.draw(window, from, to);
    this.told.textContent = `${(from / 1000).toFixed(3)} to ${(to / 1000).toFixed(3)} s`;
    this.told.dataset["window"] = `${from} ${to}`;
  }

  private fit(): void {
    if (this.curves === null || this.place.clientWidth === 0) return;
    this.curves.fit();
    void this.draw();
  }

  private zoom(factor: number, around = (this.from + this.to) / 2): void {
    this.show(around - (around - this.from) / factor, around + (this.to - around) / factor);
  }

  private pan(share: number): void {
    const step = share * (this.to - this.from);
    this.show(this.from + step, this.to + step);
  }

  private whole(): void {
    this.show(this.summary.first, this.summary.last);
  }

  private takeKey(event: KeyboardEvent): void {
    const acts: Record<string, () => void> = {
      ArrowLeft: () => this.pan(-keyStep),
      ArrowRight: () => this.pan(keyStep),
      PageUp: () => this.pan(-1),
      PageDown: () => this.pan(1),
      "+": () => this.zoom(zoomStep),
      "=": () => this.zoom(zoomStep),
      "-": () => this.zoom(1 / zoomStep),
      Home: () => this.whole(),
    };
    const act = acts[event.key];
    if (act === undefined) return;
    event.preventDefault();
    act();
  }

  private takeWheel(event: WheelEvent): void {
    event.preventDefault();
    if (Math.abs(event.deltaX) > Math.abs(event.deltaY)) this.pan(event.deltaX / 1000);
    else this.zoom(Math.exp(-event.deltaY / 400), this.curves?.timeAt(event.clientX));
  }

  private controls(): HTMLElement {
    const seconds = make("input", { type: "number", step: "any", size: "10" });
    const goToTime = (event: Event): void => {
      event.preventDefault();
      const time = 1000 * Number(seconds.value);
      const half = Math.min(2000, (this.to - this.from) / 2);
      this.show(time - half, time + half);
    };
    return make(
      "div",
      { class: "controls" },
      button("−", () => this.zoom(1 / zoomStep), "Zoom out"),
      button("+", () => this.zoom(zoomStep), "Zoom in"),
      button("←", () => this.pan(-keyStep), "Earlier"),
      button("→", () => this.pan(keyStep), "Later"),
      button("All", () => this.whole(), "Show all"),
      make("form", { onsubmit: goToTime }, labelled("Time (s)", seconds), make("button", {}, "Go")),
      labelled("Trial", this.trialChoice()),
    );
  }

  private trialChoice(): HTMLSelectElement {
    const choose = (): void => {
      const trial = this.places.trials.find(({ number }) => String(number) === choice.value);
      if (trial) this.showPlace(trial.start, trial.end);
    };
    const choice = make("select", { onchange: choose }, make("option", { value: "" }, "–"));
    for (const { number, text } of this.places.trials)
      choice.append(make("option", { value: String(number) }, `${number} ${text.slice(0, 40)}`));
    return choice;
  }

  private legend(): HTMLElement {
    const entries = legend.map(([name, text]) =>
      make("li", {}, make("span", { class: `swatch ${name}`, "aria-hidden": "true" }), text));
    return make("ul", { class: "legend" }, ...entries);
  }
}
