// Takes a picture of a player's page.
//   node shot.mjs PAGE.html OUT.png [TIME] [WIDTH HEIGHT]
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { openBrowser, openPlayer } from './browser.mjs';

const [file, out, time = '0', width = '1280', height = '800'] = process.argv.slice(2);
const browser = await openBrowser();
try {
  const viewport = { width: Number(width), height: Number(height) };
  const { page, complaints } = await openPlayer(browser, pathToFileURL(path.resolve(file)).href, viewport);
  await page.evaluate((t) => { window.halcyr.seek(t); window.halcyr.draw(); }, Number(time));
  await page.screenshot({ path: out });
  for (const complaint of complaints) console.error(complaint);
} finally {
  await browser.close();
}
