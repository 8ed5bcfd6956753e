// One open recording: the tabs over its views, each filled when it is first seen.
import { button, labelled, make } from "./dom";
import { placesOf, withTimes } from "./places";
import type { Check, Summary, TrialRule } from "./protocol";
import type { Source } from "./source";
import { AscView } from "./views/asc";
import { blocksView, factsView, lossView, verdictView } from "./views/overview";
import { ScreenView } from "./views/screen";
import { TablesView } from "./views/tables";
import { TraceView } from "./views/trace";

interface Tab {
  name: string;
  panel: HTMLElement;
  handle: HTMLButtonElement;
  seen: () => void;
}

export class RecordingView {
  readonly element = make("div", { class: "recording" });
  private readonly tabs: Tab[] = [];
  private readonly bar = make("div", { role: "tablist", "aria-label": "Views" });
  private trace: TraceView | null = null;
  private screen: ScreenView | null = null;
  private wanted: [from: number, to: number] | null = null; // before there was a trace

  constructor(
    private readonly source: Source,
    private readonly rule: TrialRule,
    private readonly chooseTrials: (rule: TrialRule) => void,
  ) {
    const overview = make("div", { class: "overview" }, factsView(source.facts));
    const reading = make("p", { class: "hint", "aria-live": "polite" }, "Reading all samples …");
    this.element.append(make("h1", {}, source.facts.file), this.bar, reading);
    this.add("Overview", overview, () => undefined);
    this.choose("Overview");
    this.fill(overview).then(
      () => reading.remove(),
      (error: unknown) => {
        reading.classList.add("failure");
        reading.textContent = `It cannot be read to its end: ${error instanceof Error ? error.message : String(error)}`;
      },
    );
  }

  close(): void {
    this.source.close();
  }

  recolour(): void {
    this.trace?.recolour();
    this.screen?.draw();
  }

  private async fill(overview: HTMLElement): Promise<void> {
    const goTo = (from: number, to: number): void => this.goTo(from, to);
    const check: Check = await this.source.check();
    overview.prepend(verdictView(check, goTo));
    const summary: Summary = await this.source.summary();
    overview.append(lossView(summary, goTo), blocksView(check, goTo));
    const places = await placesOf(this.source, summary.last);
    this.trace = new TraceView(this.source, withTimes(summary, places), places);
    this.screen = new ScreenView(this.source, this.source.facts, places.trials);
    const tables = new TablesView(this.source, this.stem, (time) => this.goTo(time, time));
    const { trace, screen } = this;
    this.add("Trace", trace.element, () => trace.show());
    this.add("Screen", screen.element, once(() => void screen.load()));
    this.add("Tables", this.withTrialRule(tables.element), once(() => void tables.load()));
    if (this.source.convert) this.addAsc(this.source.convert);
    if (this.wanted) this.goTo(...this.wanted);
  }

  private get stem(): string {
    return this.source.facts.file.replace(/\.gzd$/i, "");
  }

  private addAsc(convert: NonNullable<Source["convert"]>): void {
    this.add("ASC text", new AscView(convert, this.source.facts).element, () => undefined);
  }

  private goTo(from: number, to: number): void {
    this.wanted = [from, to];
    if (this.trace === null) return;
    this.choose("Trace");
    this.trace.showPlace(from, to);
  }

  /** Which messages begin and end a trial; the recording is opened anew with another rule. */
  private withTrialRule(tables: HTMLElement): HTMLElement {
    if (!this.source.hasTrialRule) return tables;
    const start = make("input", { type: "text", value: this.rule.start, placeholder: "TRIALID" });
    const end = make("input", { type: "text", value: this.rule.end });
    const choose = (event: Event): void => {
      event.preventDefault();
      this.chooseTrials({ start: start.value, end: end.value });
    };
    tables.append(
      make("form", { class: "controls", onsubmit: choose },
        labelled("Trials begin with a message that contains", start), labelled("and end with", end),
        make("button", {}, "Cut into trials")));
    return tables;
  }

  private add(name: string, content: HTMLElement, seen: () => void): void {
    const id = name.toLowerCase().replace(/\W/g, "-");
    const handle = button(name, () => this.choose(name));
    for (const [key, value] of [["role", "tab"], ["id", `tab-${id}`], ["aria-controls", `panel-${id}`]] as const)
      handle.setAttribute(key, value);
    handle.setAttribute("aria-selected", "false");
    handle.tabIndex = -1;
    handle.addEventListener("keydown", (event) => this.step(event));
    const panel = make("div", { role: "tabpanel", id: `panel-${id}`, "aria-labelledby": `tab-${id}`, hidden: true }, content);
    this.tabs.push({ name, panel, handle, seen });
    this.bar.append(handle);
    this.element.append(panel);
  }

  private choose(name: string): void {
    for (const tab of this.tabs) {
      const isChosen = tab.name === name;
      tab.panel.hidden = !isChosen;
      tab.handle.setAttribute("aria-selected", String(isChosen));
      tab.handle.tabIndex = isChosen ? 0 : -1;
      if (isChosen) tab.seen();
    }
  }

  private step(event: KeyboardEvent): void {
    const by = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
    if (by === undefined) return;
    const at = this.tabs.findIndex(({ handle }) => handle === event.target);
    const next = this.tabs[(at + by + this.tabs.length) % this.tabs.length];
    if (next === undefined) return;
    this.choose(next.name);
    next.handle.focus();
  }
}

function once(act: () => void): () => void {
  let isDone = false;
  return () => {
    if (!isDone) act();
    isDone = true;
  };
}
