// Tables as the library writes them: a header line, tabs, "n/a" for null.

export interface Table {
  columns: string[];
  /** Cells as written, a row each. */
  rows: string[][];
}

export function parse(text: string): Table {
  const [header, ...lines] = text.split("\n");
  if (lines.at(-1) === "") lines.pop();
  return { columns: header ? header.split("\t") : [], rows: lines.map((line) => line.split("\t")) };
}

export function written({ columns, rows }: Table): string {
  return [columns, ...rows].map((cells) => cells.join("\t") + "\n").join("");
}

const escapes: Record<string, string> = { "\\t": "\t", "\\n": "\n", "\\r": "\r", "\\\\": "\\" };

/** The text of a cell; empty for null. */
export function cellText(cell: string | undefined): string {
  if (cell === undefined || cell === "n/a") return "";
  if (!cell.includes("\\")) return cell;
  return cell.replace(/\\[tnr\\]/g, (pair) => escapes[pair] ?? pair).replace("n\\/a", "n/a");
}

/** The number of a cell; NaN for null. */
export function cellNumber(cell: string | undefined): number {
  return cell === undefined || cell === "n/a" ? NaN : Number(cell);
}

/** Reads columns of a table by name: `const [onset] = columnsOf(table, "onset")`. */
export function columnsOf(table: Table, ...names: string[]): ((row: string[]) => string | undefined)[] {
  return names.map((name) => {
    const index = table.columns.indexOf(name);
    return (row) => row[index];
  });
}
