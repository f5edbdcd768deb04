// SPDX-License-Identifier: MIT
// Renders TTML documents with imsc in headless Chromium and says what was shown.
//
//   node render_ttml.mjs IMSC_SCRIPT [--screenshots] DOCUMENT...
//
// Prints a line per document; --screenshots also writes its fullest moment to DOCUMENT.png. Ends with
// 1 when imsc has a word to say against a document, when a picture does not load, or when nothing is
// shown.
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { basename, dirname, join, resolve } from 'node:path';

const [imscScript, ...rest] = process.argv.slice(2);
const wantsScreenshots = rest[0] === '--screenshots';
const documents = rest.slice(wantsScreenshots ? 1 : 0);

const kWidth = 960;
const kHeight = 540;

// Runs in the page: renders every moment at which something changes, then the fullest for good.
async function renderAll(width, height) {
  const complaints = [];
  const handler = {};
  for (const level of ['warn', 'error', 'fatal']) {
    handler[level] = (message) => complaints.push(`${level}: ${message}`);
  }
  const xml = document.getElementById('document').textContent;
  const embedded = new DOMParser().parseFromString(xml, 'text/xml');
  const pictureUrl = (reference) => {
    if (!reference.startsWith('#')) return reference;
    const image = [...embedded.getElementsByTagName('smpte:image')]
      .find((element) => element.getAttribute('xml:id') === reference.slice(1));
    return 'data:image/png;base64,' + image.textContent;
  };
  const screen = document.getElementById('screen');
  const pictures = () => [...screen.getElementsByTagName('img')];
  const isLoaded = async (picture) => {
    if (!picture.complete) {
      await new Promise((done) => { picture.onload = picture.onerror = done; });
    }
    return picture.naturalWidth > 0;
  };
  const tt = imsc.fromXML(xml, handler);
  const show = async (time) => {
    screen.replaceChildren();
    const moment = imsc.generateISD(tt, time, handler);
    imsc.renderHTML(moment, screen, pictureUrl, height, width, false, handler);
    for (const picture of pictures()) {
      if (!await isLoaded(picture)) complaints.push(`error: a picture at ${time} s does not load`);
    }
    return screen.textContent.length + 100 * pictures().length;
  };
  let shown = 0;
  let fullest = { time: 0, amount: 0 };
  for (const time of tt.getMediaTimeEvents()) {
    const amount = await show(time);
    if (amount > 0) ++shown;
    if (amount > fullest.amount) fullest = { time, amount };
  }
  await show(fullest.time);
  document.getElementById('result').textContent =
    JSON.stringify({ shown, text: screen.textContent, pictures: pictures().length, complaints });
}

const escaped = (text) => text.replaceAll('&', '&amp;').replaceAll('<', '&lt;');

const pageOf = (xml) => `<!doctype html><meta charset="utf-8"><style>
body { margin: 0 } pre { display: none }
#screen { position: relative; width: ${kWidth}px; height: ${kHeight}px; background: #356 }
</style><div id="screen"></div><pre id="document">${escaped(xml)}</pre><pre id="result"></pre>
<script>${readFileSync(imscScript, 'utf8')}</script>
<script>(${renderAll})(${kWidth}, ${kHeight});</script>`;

function chromium(page, profile, ...task) {
  return execFileSync('chromium', [
    '--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
    '--disable-background-networking', '--disable-component-update', '--disable-sync',
    '--allow-file-access-from-files', `--user-data-dir=${profile}`, '--virtual-time-budget=20000',
    `--window-size=${kWidth},${kHeight}`, ...task, `file://${page}`,
  ], { stdio: ['ignore', 'pipe', 'ignore'], maxBuffer: 1 << 28, timeout: 120_000 }).toString();
}

function resultIn(dom) {
  const text = dom.slice(dom.lastIndexOf('<pre id="result">') + 17);
  return JSON.parse(text.slice(0, text.indexOf('</pre>'))
    .replaceAll('&lt;', '<').replaceAll('&gt;', '>').replaceAll('&amp;', '&'));
}

const profile = mkdtempSync(join(tmpdir(), 'render_ttml.'));
let isFaultless = true;
for (const document of documents) {
  // Beside the document, where its pictures are.
  const page = resolve(join(dirname(document), `.${basename(document)}.html`));
  try {
    writeFileSync(page, pageOf(readFileSync(document, 'utf8')));
    const result = resultIn(chromium(page, profile, '--dump-dom'));
    if (wantsScreenshots) chromium(page, profile, `--screenshot=${resolve(`${document}.png`)}`);
    console.log(`${document}: ${JSON.stringify(result)}`);
    isFaultless &&= result.shown > 0 && result.complaints.length === 0;
  } catch (error) {
    console.log(`${document}: ${error.message}`);
    isFaultless = false;
  } finally {
    rmSync(page, { force: true });
  }
}
rmSync(profile, { recursive: true, force: true });
process.exitCode = isFaultless ? 0 : 1;
