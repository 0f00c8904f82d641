// Makes the page of a recorded run.
//   node page.mjs RUN.glb OUT [--csv RUN.csv] [--title TEXT] [--subtitle TEXT] [--facts FACTS.json]
// OUT ending in .html: one file that holds everything. Else a folder for a web server.
// FACTS.json: [{"name": ..., "unit": ..., "expected": number or null, "measured": number}, ...]
import fs from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const here = path.dirname(fileURLToPath(import.meta.url));
const read = (name) => fs.readFileSync(path.join(here, name), 'utf8');
export const escaped = (text) => String(text)
  .replaceAll('&', '&amp;').replaceAll('<', '&lt;').replaceAll('>', '&gt;').replaceAll('"', '&quot;');

async function playerScript() {
  const result = await build({
    entryPoints: [path.join(here, 'src/player.js')],
    bundle: true, minify: true, write: false, format: 'esm', target: 'es2022', legalComments: 'inline',
  });
  return result.outputFiles[0].text;
}

/** A number as people read it: six figures. */
const shown = (value) => (typeof value === 'number' ? String(Number(value.toPrecision(6))) : '');

export function factsTable(facts) {
  if (!facts?.length) return '';
  const rows = facts.map(({ name, unit, expected, measured }) =>
    `<tr><td>${escaped(name)}</td><td class="number">${shown(expected)}</td>` +
    `<td class="number">${shown(measured)}</td><td>${escaped(unit ?? '')}</td></tr>`);
  return `<table><tr><th></th><th>expected</th><th>measured</th><th></th></tr>${rows.join('')}</table>`;
}

let script;
/** @param {{glb: string, out: string, csv?: string, title?: string, subtitle?: string, facts?: object[]}} options */
export async function writePage({ glb, out, csv, title, subtitle, facts }) {
  script ??= await playerScript();
  const bytes = fs.readFileSync(glb);
  const isOneFile = out.endsWith('.html');
  const licences = ['three', 'uplot']
    .map((name) => `${name}\n\n${read(`node_modules/${name}/LICENSE`)}`).join('\n\n');
  const values = {
    title: escaped(title ?? path.basename(glb, '.glb')),
    subtitle: escaped(subtitle ?? ''),
    style: read('src/style.css') + read('node_modules/uplot/dist/uPlot.min.css'),
    facts: factsTable(facts),
    licences: escaped(licences),
    // "</" would end the element; numbers have none, and titles are shown the same with a space.
    table: csv ? fs.readFileSync(csv, 'utf8').replaceAll('</', '< /') : '',
    source: isOneFile ? '' : ' data-src="run.glb"',
    run: isOneFile ? bytes.toString('base64') : '',
    script: isOneFile ? `<script type="module">${script.replaceAll('</script', '<\\/script')}</script>`
      : '<script type="module" src="player.js"></script>',
  };
  const html = read('src/page.html').replace(/\{\{(\w+)\}\}/g, (_, name) => values[name]);
  if (isOneFile) {
    fs.writeFileSync(out, html);
    return;
  }
  fs.mkdirSync(out, { recursive: true });
  fs.writeFileSync(path.join(out, 'index.html'), html);
  fs.writeFileSync(path.join(out, 'player.js'), script);
  fs.copyFileSync(glb, path.join(out, 'run.glb'));
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const [glb, out, ...rest] = process.argv.slice(2);
  const options = { glb, out };
  for (let i = 0; i + 1 < rest.length; i += 2) options[rest[i].replace('--', '')] = rest[i + 1];
  if (options.facts) options.facts = JSON.parse(fs.readFileSync(options.facts, 'utf8'));
  if (!out) {
    console.error('usage: node page.mjs RUN.glb OUT [--csv F] [--title T] [--subtitle T] [--facts F]');
    process.exit(2);
  }
  await writePage(options);
}
