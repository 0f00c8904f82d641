// Debian's Chromium, headless, with software rendering and without a network.
import fs from 'node:fs';
import { chromium } from 'playwright-core';

const kPaths = ['/usr/bin/chromium', '/usr/bin/chromium-browser', '/usr/bin/google-chrome'];

export const browserPath = () => process.env.HALCYR_CHROMIUM ?? kPaths.find((path) => fs.existsSync(path));

export async function openBrowser() {
  const executablePath = browserPath();
  if (!executablePath) throw new Error('Chromium is not installed: apt-get install chromium');
  return chromium.launch({
    executablePath,
    args: ['--no-sandbox', '--disable-quic', '--no-first-run', '--disable-background-networking',
      '--disable-component-update', '--disable-sync', '--use-gl=angle', '--use-angle=swiftshader',
      '--enable-unsafe-swiftshader', '--ignore-gpu-blocklist'],
  });
}

/** Opens a page and waits for its run; complaints gathers console errors and network requests. */
export async function openPlayer(browser, url, viewport = { width: 1280, height: 800 }) {
  const page = await browser.newPage({ viewport });
  const complaints = [];
  page.on('console', (message) => {
    if (message.type() === 'error') complaints.push(`console: ${message.text()}`);
  });
  page.on('pageerror', (error) => complaints.push(`error: ${error.message}`));
  page.on('request', (request) => {
    if (!/^(file|data|blob):/.test(request.url()) && !request.url().startsWith(url))
      complaints.push(`request: ${request.url()}`);
  });
  await page.goto(url);
  await page.waitForFunction(() => document.body.dataset.ready === 'true', null, { timeout: 60000 });
  return { page, complaints };
}
