// Runs a WASI program with the whole file system: node run_wasi.mjs PROGRAM ARGUMENTS...
import { readFile } from 'node:fs/promises';
import { WASI } from 'node:wasi';

const args = process.argv.slice(2);
const wasi = new WASI({ version: 'preview1', args, env: process.env, preopens: { '/': '/' } });
const module = await WebAssembly.compile(await readFile(args[0]));
// Node.js 18 has no getImportObject().
const imports = { wasi_snapshot_preview1: wasi.wasiImport };
const instance = await WebAssembly.instantiate(module, imports);
process.exitCode = wasi.start(instance);
