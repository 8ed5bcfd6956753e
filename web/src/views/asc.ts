// The ASC text: the converter's options as a form, the text as a file.
import { button, labelled, make, save } from "../dom";
import type { Converted, Facts } from "../protocol";
import { sized } from "../words";

type Convert = (options: string[], progress: (share: number) => void) => Promise<Converted>;

interface Choice {
  name: string;
  options: [word: string, text: string][];
}

const choices: Choice[] = [
  { name: "Lines", options: [["", "samples and events"], ["-s", "samples only"], ["-e", "events only"]] },
  { name: "Eyes", options: [["", "as recorded"], ["-l", "left only"], ["-r", "right only"]] },
  { name: "Positions", options: [["", "gaze"], ["-sh", "head-referenced"], ["-sp", "raw pupil"]] },
];

type Flag = [word: string, text: string];

const flags: Flag[] = [
  ["-res", "resolution"],
  ["-vel", "velocity"],
  ["-input", "input port"],
  ["-buttons", "buttons"],
  ["-ftime", "times with decimals"],
  ["-avg", "average of both eyes"],
  ["-nflags", "without flags"],
  ["-nmsg", "without messages"],
  ["-nst", "without start events"],
  ["-eh", "headers of columns"],
  ["-t", "only tabs between columns"],
  ["-z", "without repairs"],
  ["-failsafe", "a damaged file up to the damage"],
];

const rareFlags: Flag[] = [
  ["-fvel", "fast velocity"],
  ["-neye", "other than eye events only"],
  ["-nv", "without viewer commands"],
  ["-o", "offsets at the start of messages applied"],
  ["-ntarget", "without head target"],
  ["-hpos", "head markers"],
  ["-geom", "messages of geometry"],
  ["-hr", "head resolution"],
  ["-ned", "without extended eye and head"],
  ["-nht", "without head tracking"],
  ["-pe", "pupil ellipse"],
  ["-npa_check", "positions without a pupil too"],
  ["-ntime_check", "large times too"],
  ["-utf8", "marked as UTF-8"],
];

const values: Flag[] = [
  ["-miss", "Missing values as"],
  ["-fp", "More decimals"],
];

/** Words as a shell would cut them; quotes hold blanks together. */
export function wordsOf(line: string): string[] {
  return [...line.matchAll(/"([^"]*)"|'([^']*)'|(\S+)/g)].map((hit) => hit[1] ?? hit[2] ?? hit[3] ?? "");
}

export class AscView {
  readonly element: HTMLElement;
  private readonly selects = choices.map(({ options }) =>
    make("select", {}, ...options.map(([word, text]) =>
      make("option", { value: word }, word === "" ? text : `${text} (${word})`))));
  private readonly boxes = [...flags, ...rareFlags].map(([word]) => make("input", { type: "checkbox", value: word }));
  private readonly fields = values.map(() => make("input", { type: "text", size: "4" }));
  private readonly further = make("input", { type: "text", spellcheck: "false", placeholder: "-defres 30 30" });
  private readonly bar = make("progress", { max: "1", "aria-label": "Converting", hidden: true });
  private readonly told = make("pre", { class: "hint", "aria-live": "polite" });

  constructor(
    private readonly convert: Convert,
    private readonly facts: Facts,
  ) {
    const boxes = [...flags, ...rareFlags].map(([word, text], i) =>
      make("label", { class: "flag" }, this.boxes[i] ?? "", ` ${text} (${word})`));
    for (const box of this.boxes) box.checked = box.value === "-failsafe" && facts.damaged_at !== null;
    this.element = make(
      "section",
      { "aria-label": "ASC text" },
      make("p", { class: "hint" }, "The text that gzdconv writes with the same options."),
      make("div", { class: "controls" }, ...this.selects.map((field, i) => labelled(choices[i]?.name ?? "", field))),
      make("fieldset", {}, make("legend", {}, "Further columns and lines"), ...boxes.slice(0, flags.length)),
      make("details", {}, make("summary", {}, "Rarely needed"), make("fieldset", {}, ...boxes.slice(flags.length))),
      make("div", { class: "controls" },
        ...this.fields.map((field, i) => labelled(`${values[i]?.[1]} (${values[i]?.[0]})`, field)),
        labelled("Other options", this.further),
        button("Save the ASC text", () => void this.run())),
      this.bar,
      this.told,
    );
  }

  private options(): string[] {
    const chosen = [...this.selects.map(({ value }) => value), ...this.boxes.filter(({ checked }) => checked).map(({ value }) => value)];
    const valued = this.fields.flatMap(({ value }, i) => (value === "" ? [] : [values[i]?.[0] ?? "", value]));
    return [...chosen.filter((word) => word !== ""), ...valued, ...wordsOf(this.further.value)];
  }

  private async run(): Promise<void> {
    this.bar.hidden = false;
    this.bar.value = 0;
    this.told.textContent = "";
    try {
      this.take(await this.convert(this.options(), (share) => { this.bar.value = share; }));
    } catch (error) {
      this.told.textContent = error instanceof Error ? error.message : String(error);
    } finally {
      this.bar.hidden = true;
    }
  }

  private take({ status, said, text }: Converted): void {
    const lines = said.filter((line) => line.trim() !== "").slice(-12);
    if (text === null || status !== 0) {
      this.told.textContent = ["It could not be converted.", ...lines].join("\n");
      return;
    }
    const name = this.facts.file.replace(/\.gzd$/i, "") + ".asc";
    save(name, text);
    this.told.textContent = [`${name}, ${sized(text.size)}`, ...lines].join("\n");
  }
}
