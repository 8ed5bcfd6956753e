// Tables: searched, sorted, copied, saved.
import { button, labelled, make, save } from "../dom";
import type { Source } from "../source";
import { cellNumber, cellText, parse, written, type Table } from "../tsv";
import { counted, told } from "../words";

export const tableNames = ["trials", "fixations", "saccades", "blinks", "messages", "inputs", "blocks"];
const rowsAtOnce = 200;

type Order = { column: number; isDown: boolean } | null;

function compared(a: string | undefined, b: string | undefined): number {
  const difference = cellNumber(a) - cellNumber(b);
  if (!Number.isNaN(difference)) return difference;
  return cellText(a).localeCompare(cellText(b), "en", { numeric: true });
}

function matching({ columns, rows }: Table, searched: string, order: Order): Table {
  const words = searched.toLowerCase();
  const found = words === "" ? [...rows] : rows.filter((row) => row.join("\t").toLowerCase().includes(words));
  if (order) {
    const sign = order.isDown ? -1 : 1;
    found.sort((a, b) => sign * compared(a[order.column], b[order.column]));
  }
  return { columns, rows: found };
}

export class TablesView {
  readonly element: HTMLElement;
  private readonly choice = make("select", { onchange: () => void this.load() },
    ...tableNames.map((name) => make("option", { value: name }, name)));
  private readonly search = make("input", { type: "search", oninput: () => this.fill() });
  private readonly count = make("p", { class: "hint", "aria-live": "polite" });
  private readonly head = make("thead");
  private readonly body = make("tbody");
  private readonly more = button("Show more rows", () => this.append());
  private table: Table = { columns: [], rows: [] };
  private found: Table = this.table;
  private order: Order = null;
  private shown = 0;

  constructor(
    private readonly source: Source,
    private readonly name: string,
    private readonly goToTime: (time: number) => void,
  ) {
    this.element = make(
      "section",
      { "aria-label": "Tables" },
      make(
        "div",
        { class: "controls" },
        labelled("Table", this.choice),
        labelled("Search", this.search),
        button("Copy as TSV", () => void navigator.clipboard.writeText(written(this.found))),
        button("Save as TSV", () => this.save()),
      ),
      this.count,
      make("div", { class: "scroll", tabindex: "0", role: "region", "aria-label": "Rows" },
        make("table", {}, this.head, this.body)),
      this.more,
    );
  }

  async load(): Promise<void> {
    this.table = parse(await this.source.table(this.choice.value));
    this.order = null;
    this.fill();
  }

  private fill(): void {
    this.found = matching(this.table, this.search.value, this.order);
    this.count.textContent = `${counted(this.found.rows.length, "row")} of ${told(this.table.rows.length)}`;
    this.head.replaceChildren(make("tr", {}, ...this.table.columns.map((_, index) => this.headCell(index))));
    this.body.replaceChildren();
    this.shown = 0;
    this.append();
  }

  private headCell(index: number): HTMLElement {
    const name = this.table.columns[index] ?? "";
    const isSorted = this.order?.column === index;
    const sort = this.order?.isDown ? "descending" : "ascending";
    const act = button(name, () => this.sortBy(index), `Sort by ${name}`);
    return make("th", { scope: "col", "aria-sort": isSorted ? sort : "none" }, act);
  }

  private sortBy(column: number): void {
    const isAgain = this.order?.column === column;
    this.order = { column, isDown: isAgain ? !this.order?.isDown : false };
    this.fill();
  }

  private append(): void {
    const next = this.found.rows.slice(this.shown, this.shown + rowsAtOnce);
    this.body.append(...next.map((row) => this.rowOf(row)));
    this.shown += next.length;
    this.more.hidden = this.shown >= this.found.rows.length;
  }

  private rowOf(row: string[]): HTMLTableRowElement {
    const timed = ["time", "onset", "start"].map((name) => this.table.columns.indexOf(name)).find((index) => index >= 0);
    const cells = row.map((cell, index) => {
      const text = cellText(cell);
      if (Number.isNaN(Number(text))) return make("td", { class: "words" }, text);
      if (index !== timed || text === "") return make("td", {}, text);
      return make("td", {}, button(text, () => this.goToTime(Number(text)), `${text} ms: show in the trace`));
    });
    return make("tr", {}, ...cells);
  }

  private save(): void {
    const text = new Blob([written(this.found)], { type: "text/tab-separated-values" });
    save(`${this.name}_${this.choice.value}.tsv`, text);
  }
}
