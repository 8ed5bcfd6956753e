// The ASC text: the converter's options as a form, the text as a file.
import { button, labelled, make, save } from "../dom";
import type { Converted } from "../protocol";
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

const flags: [word: string, text: string][] = [
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

/** Words as a shell would cut them; quotes hold blanks together. */
export function wordsOf(line: string): string[] {
  return [...line.matchAll(/"([^"]*)"|'([^']*)'|(\S+)/g)].map((hit) => hit[1] ?? hit[2] ?? hit[3] ?? "");
}

export class AscView {
  readonly element: HTMLElement;
  private readonly selects = choices.map(({ options }) =>
    make("select", {}, ...options.map(([word, text]) =>
      make("option", { value: word }, word === "" ? text : `${text} (${word})`))));
  private readonly boxes = flags.map(([word]) => make("input", { type: "checkbox", value: word }));
  private readonly further = make("input", { type: "text", spellcheck: "false", placeholder: "-miss . -fp 2" });
  private readonly bar = make("progress", { max: "1", "aria-label": "Converting", hidden: true });
  private readonly told = make("pre", { class: "hint", "aria-live": "polite" });

  constructor(
    private readonly convert: Convert,
    private readonly name: string,
  ) {
    const boxes = this.boxes.map((box, i) => make("label", { class: "flag" }, box, ` ${flags[i]?.[1]} (${flags[i]?.[0]})`));
    this.element = make(
      "section",
      { "aria-label": "ASC text" },
      make("p", { class: "hint" }, "The text that gzdconv writes with the same options, to the byte."),
      make("div", { class: "controls" }, ...this.selects.map((field, i) => labelled(choices[i]?.name ?? "", field))),
      make("fieldset", {}, make("legend", {}, "Further columns and lines"), ...boxes),
      make("div", { class: "controls" }, labelled("Other options", this.further), button("Save the ASC text", () => void this.run())),
      this.bar,
      this.told,
    );
  }

  private options(): string[] {
    const chosen = [...this.selects.map(({ value }) => value), ...this.boxes.filter(({ checked }) => checked).map(({ value }) => value)];
    return [...chosen.filter((word) => word !== ""), ...wordsOf(this.further.value)];
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
    const name = this.name.replace(/\.gzd$/i, "") + ".asc";
    save(name, text);
    this.told.textContent = [`${name}, ${sized(text.size)}`, ...lines].join("\n");
  }
}
