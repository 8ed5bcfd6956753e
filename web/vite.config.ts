// Two bundles, chosen by the mode: the page, and the worker that has the recording. Each is one
// classic script, so that tools/assemble.mjs can put them into a file that opens from a disk.
import { defineConfig } from "vite";

export default defineConfig(({ mode }) => ({
  build: {
    outDir: `out/${mode}`,
    target: "es2022",
    cssCodeSplit: false,
    lib: { entry: `src/${mode}.ts`, formats: ["iife"], name: "gzdpage", fileName: () => `${mode}.js` },
  },
}));
