// The page: takes files or the data of a report, and shows their views.
import "./style.css";
import { button, make } from "./dom";
import { isPacked } from "./packed";
import { RecordingView } from "./recording_view";
import { openReport } from "./report_source";
import { openFile } from "./source";
import type { TrialRule } from "./protocol";
import { wireTheme } from "./theme";

const noRule: TrialRule = { start: "", end: "" };

function element(id: string): HTMLElement {
  const found = document.getElementById(id);
  if (found === null) throw new Error(`the page has no #${id}`);
  return found;
}

class Page {
  private readonly list = element("files");
  private readonly stage = element("stage");
  private readonly status = element("status");
  private readonly progress = element("progress") as HTMLProgressElement;
  private view: RecordingView | null = null;
  private files: File[] = [];
  private opening = new AbortController();

  take(files: Iterable<File>): void {
    const [first, ...others] = files;
    if (first === undefined) return;
    this.files = [first, ...others];
    this.listFiles();
    void this.open(first, noRule);
  }

  private listFiles(): void {
    const items = this.files.map((file) => make("li", {}, button(file.name, () => void this.open(file, noRule))));
    this.list.replaceChildren(...(items.length > 1 ? items : []));
  }

  async open(file: File, rule: TrialRule): Promise<void> {
    this.opening.abort();
    const task = this.opening = new AbortController();
    this.view?.close();
    this.view = null;
    this.stage.replaceChildren();
    this.say(`Opening ${file.name} …`);
    this.progress.hidden = false;
    this.progress.value = 0;
    try {
      const source = await openFile(file, rule, (share) => { this.progress.value = share; }, task.signal);
      if (task.signal.aborted) return source.close();
      this.show(new RecordingView(source, rule, (chosen) => void this.open(file, chosen)));
      this.say(`${file.name} is open.`);
      document.title = file.name;
    } catch (error) {
      if (!task.signal.aborted) this.fail(file.name, error);
    } finally {
      if (!task.signal.aborted) this.progress.hidden = true;
    }
  }

  async openReport(): Promise<void> {
    const source = await openReport();
    document.title = `${source.facts.file} – report`;
    element("choose").hidden = true;
    this.show(new RecordingView(source, noRule, () => undefined));
  }

  fail(name: string, error: unknown): void {
    const reason = error instanceof Error ? error.message : String(error);
    this.say(`${name} cannot be opened: ${reason}`, true);
  }

  private show(view: RecordingView): void {
    this.view = view;
    this.stage.replaceChildren(view.element);
    wireTheme(() => view.recolour());
  }

  private say(text: string, isFailure = false): void {
    this.status.textContent = text;
    this.status.classList.toggle("failure", isFailure);
  }
}

function wireFiles(page: Page): void {
  const input = element("input") as HTMLInputElement;
  input.addEventListener("click", () => { input.value = ""; }); // the same file may be chosen again
  input.addEventListener("change", () => page.take(input.files ?? []));
  document.addEventListener("dragover", (event) => {
    event.preventDefault();
    document.body.classList.add("dragging");
  });
  document.addEventListener("dragleave", () => document.body.classList.remove("dragging"));
  document.addEventListener("drop", (event) => {
    event.preventDefault();
    document.body.classList.remove("dragging");
    page.take(event.dataTransfer?.files ?? []);
  });
}

const page = new Page();
wireFiles(page);
if (isPacked("recording")) page.openReport().catch((error: unknown) => page.fail("The report", error));
