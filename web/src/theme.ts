// Drawings follow the light or dark of the system, as the rest of the page does by itself.
const dark = matchMedia("(prefers-color-scheme: dark)");
let recolour: () => void = () => undefined;
dark.addEventListener("change", () => recolour());

export function wireTheme(act: () => void): void {
  recolour = act;
}
