// The player beside the run that it plays. HALCYR_RUN is a folder made by halcyr_rec_run.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import http from 'node:http';
import os from 'node:os';
import path from 'node:path';
import { after, before, test } from 'node:test';
import { pathToFileURL } from 'node:url';
import { openBrowser, openPlayer } from '../browser.mjs';
import { writePage } from '../page.mjs';

const kPositionTolerance = 1e-6; // m
const kTurnTolerance = 2e-4; // rad
const run = process.env.HALCYR_RUN;
const poses = JSON.parse(fs.readFileSync(path.join(run, 'poses.json'), 'utf8'));
const work = fs.mkdtempSync(path.join(os.tmpdir(), 'halcyr_player_'));
const options = {
  glb: path.join(run, 'run.glb'),
  csv: path.join(run, 'run.csv'),
  title: 'A <run> & "more"',
  facts: [{ name: 'height', unit: 'm', expected: null, measured: 1.5 }],
};
let browser;

before(async () => {
  await writePage({ ...options, out: path.join(work, 'run.html') });
  await writePage({ ...options, out: path.join(work, 'site') });
  browser = await openBrowser();
});
after(async () => {
  await browser?.close();
  fs.rmSync(work, { recursive: true, force: true });
});

const openFile = () => openPlayer(browser, pathToFileURL(path.join(work, 'run.html')).href);

/** Colours of a grid of pixels of the picture. */
const colours = (page) => page.evaluate(() => {
  window.halcyr.draw();
  const canvas = document.querySelector('#view canvas');
  const small = document.createElement('canvas');
  small.width = small.height = 64;
  const context = small.getContext('2d');
  context.drawImage(canvas, 0, 0, 64, 64);
  return new Set(new Uint32Array(context.getImageData(0, 0, 64, 64).data.buffer)).size;
});

test('poses are those of the run at every step', async () => {
  const { page, complaints } = await openFile();
  const played = await page.evaluate((asked) => asked.map(({ time, name }) => {
    window.halcyr.seek(time);
    return window.halcyr.pose(name);
  }), poses);
  poses.forEach((pose, i) => {
    const { position, quaternion } = played[i];
    const off = Math.hypot(...position.map((x, c) => x - pose.position[c]));
    const same = Math.hypot(...quaternion.map((x, c) => x - pose.quaternion[c]));
    const opposite = Math.hypot(...quaternion.map((x, c) => x + pose.quaternion[c]));
    assert.ok(off < kPositionTolerance, `${pose.name} at ${pose.time} s is off by ${off} m`);
    assert.ok(2 * Math.min(same, opposite) < kTurnTolerance, `${pose.name} at ${pose.time} s is turned`);
  });
  const there = await page.evaluate(() => [0.1, 0.6, 1].map((time) => {
    window.halcyr.seek(time);
    return ['gone', 'late'].map((name) => window.halcyr.pose(name) !== null);
  }));
  assert.deepEqual(there, [[true, false], [false, false], [false, true]]);
  assert.ok(await colours(page) > 20, 'the picture is uniform');
  assert.deepEqual(complaints, []);
  await page.close();
});

test('keys, plots and controls move the run', async () => {
  const { page, complaints } = await openFile();
  const time = () => page.evaluate(() => Number(document.getElementById('slider').value));
  await page.keyboard.press('End');
  assert.ok(Math.abs(await time() - await page.evaluate(() => window.halcyr.duration)) < 1e-9);
  await page.keyboard.press('Home');
  await page.keyboard.press('ArrowRight');
  assert.ok(Math.abs(await time() - 1 / 60) < 1e-9);
  await page.keyboard.press('Shift+ArrowRight');
  assert.ok(Math.abs(await time() - 61 / 60) < 1e-9);
  const plot = page.locator('.u-over').first();
  const { width } = await plot.boundingBox();
  await plot.click({ position: { x: width / 2, y: 20 } });
  const middle = await time();
  assert.ok(middle > 0.3 && middle < 0.9, `the plot's middle is at ${middle} s`);
  await page.keyboard.press('l');
  await page.keyboard.press('c');
  await page.keyboard.press('f');
  assert.ok(await page.locator('.labels span', { hasText: 'box' }).isVisible());
  assert.ok(await page.locator('#contacts').isChecked());
  assert.equal(await page.locator('#follow').inputValue(), '0');
  await page.keyboard.press('Space');
  await page.waitForFunction((from) => Number(document.getElementById('slider').value) !== from, middle);
  assert.equal(await page.locator('.uplot').count(), 2); // m and m/s
  assert.equal(await page.title(), options.title);
  assert.deepEqual(complaints, []);
  await page.close();
});

test('the folder serves the same run', async () => {
  const site = path.join(work, 'site');
  const server = http.createServer((request, response) => {
    const file = path.join(site, path.normalize(request.url === '/' ? '/index.html' : request.url));
    const types = { '.html': 'text/html', '.js': 'text/javascript', '.glb': 'model/gltf-binary' };
    response.setHeader('content-type', types[path.extname(file)] ?? 'text/plain');
    response.end(fs.readFileSync(file));
  });
  await new Promise((resolve) => { server.listen(0, '127.0.0.1', resolve); });
  const { page, complaints } = await openPlayer(browser, `http://127.0.0.1:${server.address().port}/`);
  assert.ok(await page.evaluate(() => window.halcyr.pose('box').position[2]) > 8.9);
  assert.ok(await colours(page) > 20, 'the picture is uniform');
  assert.deepEqual(complaints, []);
  await page.close();
  server.close();
});
