// Makes the gallery of recorded examples: a page a run, and index.html with a card each.
//   node gallery.mjs FOLDER EXAMPLES
// FOLDER holds NAME.glb with NAME.csv, NAME.json and NAME.trace.json, and drawings NAME.svg; EXAMPLES
// the programs' sources, whose first comment tells what each shows.
import fs from 'node:fs';
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { browserPath, openBrowser, openPlayer } from './browser.mjs';
import { escaped, factsTable, writePage } from './page.mjs';

const [folder, examples] = process.argv.slice(2);
if (!examples) {
  console.error('usage: node gallery.mjs FOLDER EXAMPLES');
  process.exit(2);
}

const inFolder = (name) => path.join(folder, name);
const exists = (name) => fs.existsSync(inFolder(name));
const titleOf = (name) => name[0].toUpperCase() + name.slice(1).replaceAll('_', ' ');

/** The comment with which a program begins, without its usage. */
function storyOf(name) {
  const file = path.join(examples, `${name}.cpp`);
  if (!fs.existsSync(file)) return '';
  const lines = fs.readFileSync(file, 'utf8').split('\n');
  const end = lines.findIndex((line) => !line.startsWith('//'));
  return lines.slice(0, end).map((line) => line.slice(2).trim()).join(' ').replace(/Usage:.*$/, '').trim();
}

/** Takes a still where most is to be seen, a third into the run. */
async function takeStill(browser, name) {
  const url = pathToFileURL(path.resolve(inFolder(`${name}.html`))).href;
  const { page, complaints } = await openPlayer(browser, url, { width: 1280, height: 720 });
  await page.evaluate(() => { window.halcyr.seek(window.halcyr.duration / 3); window.halcyr.draw(); });
  await page.locator('#view').screenshot({ path: inFolder(`${name}.png`) });
  await page.close();
  if (complaints.length > 0) throw new Error(`${name}: ${complaints.join('; ')}`);
}

/** The outcome in a line: the fact whose truth is known, or the first. */
function factLine(facts) {
  const fact = facts.find(({ expected }) => expected !== null) ?? facts[0];
  if (!fact) return '';
  const shown = (value) => Number(value.toPrecision(5));
  const unit = fact.unit ? ` ${fact.unit}` : '';
  return fact.expected === null ? `${fact.name}: ${shown(fact.measured)}${unit}`
    : `${fact.name}: expected ${shown(fact.expected)}${unit}, measured ${shown(fact.measured)}${unit}`;
}

function card(name, facts) {
  const still = exists(`${name}.png`) ? `${name}.png` : exists(`${name}.svg`) ? `${name}.svg` : null;
  const page = exists(`${name}.html`) ? `${name}.html` : still;
  const kinds = { glb: 'glTF', csv: 'table', 'trace.json': 'trace', svg: 'drawing' };
  const files = Object.entries(kinds).filter(([kind]) => exists(`${name}.${kind}`))
    .map(([kind, label]) => `<a href="${name}.${kind}">${label}</a>`);
  const picture = still ? `<img src="${still}" alt="${escaped(titleOf(name))}" loading="lazy">` : '';
  return `<article><a href="${page}">${picture}<h2>${escaped(titleOf(name))}</h2></a>` +
    `<p>${escaped(storyOf(name))}</p><p class="fact">${escaped(factLine(facts))}</p>` +
    `<p class="files">${files.join(' · ')}</p></article>`;
}

const names = fs.readdirSync(folder).filter((file) => /\.(glb|svg)$/.test(file))
  .map((file) => file.replace(/\.(glb|svg)$/, '')).sort();
let browser = null;
if (browserPath()) browser = await openBrowser();
else console.log('no pictures: Chromium is missing (apt-get install chromium)');
const cards = [];
try {
  for (const [i, name] of [...new Set(names)].entries()) {
    process.stdout.write(`\r[${i + 1}/${names.length}] ${name}${' '.repeat(20)}`);
    const facts = exists(`${name}.json`) ? JSON.parse(fs.readFileSync(inFolder(`${name}.json`), 'utf8')) : [];
    if (exists(`${name}.glb`)) {
      await writePage({
        glb: inFolder(`${name}.glb`), out: inFolder(`${name}.html`), title: titleOf(name),
        subtitle: storyOf(name), csv: exists(`${name}.csv`) ? inFolder(`${name}.csv`) : undefined, facts,
      });
      if (browser) await takeStill(browser, name);
    }
    cards.push(card(name, facts));
  }
} finally {
  await browser?.close();
}
const style = `
:root { font: 16px/1.5 system-ui, sans-serif; color: #1f2933; background: #f4f6f8; }
body { max-width: 1200px; margin: 0 auto; padding: 24px 16px; }
main { display: grid; gap: 20px; grid-template-columns: repeat(auto-fill, minmax(320px, 1fr)); }
article { background: #fff; border: 1px solid #d7dde3; border-radius: 8px; overflow: hidden; padding-bottom: 8px; }
article img { width: 100%; aspect-ratio: 16 / 10; object-fit: contain; display: block; background: #dfe7ee; }
h2 { font-size: 18px; margin: 10px 14px 0; } p { margin: 6px 14px; font-size: 14px; }
a { color: inherit; text-decoration: none; } .files a { text-decoration: underline; }
.fact { font-weight: 600; font-variant-numeric: tabular-nums; }`;
fs.writeFileSync(inFolder('index.html'), `<!doctype html><html lang="en"><head><meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1"><link rel="icon" href="data:,">
<title>Halcyr: gallery</title><style>${style}</style></head><body><h1>Halcyr</h1>
<p>Runs of the examples: open a card to play it. What is measured was computed from the run that is shown.</p>
<main>${cards.join('\n')}</main></body></html>\n`);
console.log(`\r${cards.length} cards in ${inFolder('index.html')}${' '.repeat(20)}`);
