// Elements of the page. Texts of recordings become text nodes, never markup.

type Child = Node | string;
type Attributes = Record<string, string | boolean | ((event: Event) => void)>;

/** An element; an attribute that begins with "on" is a listener, `true` one without a value. */
export function make<Tag extends keyof HTMLElementTagNameMap>(
  tag: Tag,
  attributes: Attributes = {},
  ...children: Child[]
): HTMLElementTagNameMap[Tag] {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === "function") element.addEventListener(name.slice(2), value);
    else if (value !== false) element.setAttribute(name, value === true ? "" : value);
  }
  element.append(...children);
  return element;
}

export function button(text: string, act: () => void, name = text): HTMLButtonElement {
  return make("button", { type: "button", "aria-label": name, onclick: act }, text);
}

let fields = 0;

/** A field below its label. */
export function labelled(text: string, field: HTMLElement): HTMLDivElement {
  field.id = `field-${++fields}`;
  return make("div", { class: "field" }, make("label", { for: field.id }, text), field);
}

/** Rows of a list of terms. */
export function terms(rows: [string, Child][]): HTMLDListElement {
  const list = make("dl");
  for (const [term, text] of rows)
    list.append(make("div", {}, make("dt", {}, term), make("dd", {}, text)));
  return list;
}

/** Hands a text out as a file. */
export function save(name: string, content: Blob): void {
  const address = URL.createObjectURL(content);
  const link = make("a", { href: address, download: name });
  link.click();
  setTimeout(() => URL.revokeObjectURL(address), 60_000);
}

/** The value of a colour or length of the style sheet. */
export function styleValue(name: string): string {
  return getComputedStyle(document.documentElement).getPropertyValue(name).trim();
}
