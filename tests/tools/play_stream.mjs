// SPDX-License-Identifier: MIT
// Plays the segments of `txsub stream` with video that ffmpeg has cut from the same recording, in hls.js,
// Shaka Player and dash.js, and compares every cue that is shown with the truth.
//
//   node play_stream.mjs TXSUB DIRECTORY RECORDING PAGE LANGUAGE
//
// RECORDING has teletext and no video, which is put to it here. Writes into DIRECTORY, prints a line
// per player, and ends with 1 when a cue is missing, is one too many, or is off by more than 40 ms.
import { execFileSync, spawn } from 'node:child_process';
import {
  createReadStream, existsSync, mkdirSync, readdirSync, readFileSync, rmSync, statSync, writeFileSync,
} from 'node:fs';
import { createServer } from 'node:http';
import { extname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import puppeteer from 'puppeteer-core';

const [txsub, directory, recording, pageNumber, language] = process.argv.slice(2);
const kModules = fileURLToPath(new URL('node_modules/', import.meta.url));
const kTolerance = 0.04;
const kLongest = 60_000;  // milliseconds for all players together
const kSeconds = 21;      // of the video
const kStart = 10;        // its first PTS, in seconds
const kTimescale = 12_800;  // of ffmpeg's MP4 tracks of 25 pictures a second

const kScripts = {
  'hls.js': 'hls.js/dist/hls.min.js',
  shaka: 'shaka-player/dist/shaka-player.compiled.js',
  'dash.js': 'dashjs/dist/modern/umd/dash.all.min.js',
};

const kTypes = {
  '.html': 'text/html', '.js': 'text/javascript', '.m3u8': 'application/vnd.apple.mpegurl',
  '.mpd': 'application/dash+xml', '.vtt': 'text/vtt', '.ts': 'video/mp2t', '.m4s': 'video/mp4',
  '.mp4': 'video/mp4',
};

// Runs in the page: plays to the end and notes every cue while it is active.
async function play(player, url, language, format, longest) {
  const video = document.querySelector('video');
  const overlay = document.getElementById('overlay');
  const seen = new Map();
  const errors = [];
  const textOf = (cue) => {
    if (cue.isd || cue.cueHTMLElement) {  // dash.js draws TTML by itself
      const walk = (node) => (node.kind === 'br' ? '\n' : '') + (node.text ?? '') +
        (node.contents ?? []).map(walk).join('');
      return cue.isd ? walk(cue.isd) : cue.cueHTMLElement.textContent;
    }
    return cue.text.replace(/<[^>]*>/g, '').replace(/&amp;/g, '&').replace(/&lt;/g, '<')
      .replace(/&gt;/g, '>');
  };
  const note = () => {
    for (const track of video.textTracks) {
      if (track.mode === 'disabled') continue;
      for (const cue of track.activeCues ?? []) {
        const text = textOf(cue).replace(/\s+/g, ' ').trim();
        if (text === '') continue;
        const key = `${cue.startTime.toFixed(3)} ${cue.endTime.toFixed(3)} ${text}`;
        if (!seen.has(key)) {
          seen.set(key, { start: cue.startTime, stop: cue.endTime, text, at: video.currentTime });
        }
      }
    }
  };
  let joined = null;
  video.onplaying = () => { joined ??= video.currentTime; };
  const ended = new Promise((done) => { video.onended = () => done('ended'); });
  video.muted = true;
  if (player === 'hls.js') {
    const hls = new Hls({ renderTextTracksNatively: true });
    hls.on(Hls.Events.ERROR, (event, data) => { if (data.fatal) errors.push(data.details); });
    hls.on(Hls.Events.SUBTITLE_TRACKS_UPDATED, () => setTimeout(() => {
      hls.subtitleDisplay = true;
      hls.subtitleTrack = hls.subtitleTracks.findIndex((track) => track.lang === language);
    }));
    hls.loadSource(url);
    hls.attachMedia(video);
  } else if (player === 'shaka') {
    shaka.polyfill.installAll();
    const shakaPlayer = new shaka.Player();
    await shakaPlayer.attach(video);
    shakaPlayer.configure({
      textDisplayFactory: () => new shaka.text.NativeTextDisplayer(shakaPlayer),
    });
    shakaPlayer.addEventListener('error', (event) => errors.push(`shaka ${event.detail.code}`));
    shakaPlayer.configure({ preferredTextLanguage: language, preferredText: [{ language }] });
    await shakaPlayer.load(url);
    const track = shakaPlayer.getTextTracks()
      .find((one) => one.language === language && (!format || one.codecs === format));
    if (!track) {
      return { errors: ['no such track: ' + JSON.stringify(shakaPlayer.getTextTracks()
        .map((one) => [one.language, one.codecs]))] };
    }
    shakaPlayer.selectTextTrack(track);
    shakaPlayer.setTextTrackVisibility?.(true);
  } else {
    const dash = dashjs.MediaPlayer().create();
    dash.initialize(video, null, false);
    dash.updateSettings({ streaming: { text: { defaultEnabled: true } } });
    dash.attachTTMLRenderingDiv(overlay);
    dash.on(dashjs.MediaPlayer.events.ERROR, (event) => errors.push(event.error?.message ?? 'error'));
    dash.setInitialMediaSettingsFor('text', { lang: language, codec: format });
    dash.attachSource(url);
  }
  const timer = setInterval(note, 20);
  await video.play().catch((error) => errors.push(String(error)));
  const outcome = await Promise.race([ended, new Promise((done) => setTimeout(done, longest, 'late'))]);
  clearInterval(timer);
  return { outcome, errors, joined, time: video.currentTime, cues: [...seen.values()] };
}

function serve() {
  const server = createServer((request, response) => {
    const url = new URL(request.url, 'http://localhost');
    const path = decodeURIComponent(url.pathname);
    if (path.startsWith('/page/')) {
      response.setHeader('Content-Type', 'text/html');
      response.end(`<!doctype html><meta charset="utf-8"><video width="320" height="180"></video>
<div id="overlay"></div><script src="/modules/${kScripts[path.slice(6)]}"></script>
<script>${play}</script>`);
      return;
    }
    if (path.startsWith('/pages/')) {  // all in one, as browsers let only what is seen play
      response.setHeader('Content-Type', 'text/html');
      response.end((path === '/pages/live' ? liveRuns : runs).map(({ player }, i) => `<iframe name="run${i}" src="/page/${player}"
width="340" height="240" allow="autoplay"></iframe>`).join(''));
      return;
    }
    const file = path.startsWith('/modules/') ? join(kModules, path.slice(9)) : join(directory, path);
    try {
      statSync(file);
    } catch {
      response.statusCode = 404;
      response.end();
      return;
    }
    response.setHeader('Content-Type', kTypes[extname(file)] ?? 'application/octet-stream');
    response.setHeader('Cache-Control', 'no-store');
    createReadStream(file).pipe(response);
  });
  return new Promise((done) => server.listen(0, '127.0.0.1', () => done(server)));
}

const seconds = (text) => text.split(':').reduce((sum, part) => sum * 60 + Number(part), 0);

// What `convert` shows, in times of the video.
function readTruth() {
  const cues = [];
  const text = run(txsub, 'convert', below('recording.ts'), '--page', pageNumber, '--absolute');
  for (const block of text.split('\n\n')) {
    const match = block.match(/^([\d:.]+) --> ([\d:.]+)[^\n]*\n([\s\S]*)$/m);
    if (!match) continue;
    cues.push({
      start: seconds(match[1]) - kStart,
      stop: seconds(match[2]) - kStart,
      text: match[3].replace(/<[^>]*>/g, '').replace(/&amp;/g, '&').replace(/&lt;/g, '<')
        .replace(/&gt;/g, '>').replace(/\s+/g, ' ').trim(),
    });
  }
  return cues;
}

// A cue that goes on in the next segment is one.
function joined(cues) {
  const result = [];
  for (const cue of cues.slice().sort((a, b) => a.start - b.start)) {
    const last = result.find((one) => one.text === cue.text && cue.start <= one.stop + kTolerance);
    if (last) last.stop = Math.max(last.stop, cue.stop);
    else result.push({ ...cue });
  }
  return result;
}

// `from`: a player of a programme that runs joins there; what began before counts for nothing.
function faultsOf(shown, truth, from) {
  const faults = [];
  const left = joined(shown);
  for (const cue of truth.filter((one) => one.start >= from)) {
    const index = left.findIndex((one) => one.text === cue.text);
    if (index < 0) {
      faults.push(`"${cue.text}" at ${cue.start} s is missing`);
      continue;
    }
    const [found] = left.splice(index, 1);
    const isOff = Math.abs(found.start - cue.start) > kTolerance ||
      Math.abs(found.stop - cue.stop) > kTolerance;
    if (isOff) faults.push(`"${cue.text}" is shown ${found.start}-${found.stop} s, not ${cue.start}-${cue.stop} s`);
    else if (found.at - cue.start > 0.5) faults.push(`"${cue.text}" comes ${found.at - cue.start} s late`);
  }
  for (const one of left) {
    if (one.start >= from) faults.push(`"${one.text}" at ${one.start} s is one too many`);
  }
  return faults;
}

const below = (...parts) => join(directory, ...parts);
const run = (program, ...words) => execFileSync(program, words, { stdio: ['ignore', 'pipe', 'inherit'] })
  .toString();
const ffmpeg = (...words) => run('ffmpeg', '-y', '-v', 'error', '-nostdin', ...words);

function makeRecording() {
  rmSync(directory, { recursive: true, force: true });
  mkdirSync(below('video'), { recursive: true });
  ffmpeg('-f', 'lavfi', '-i', `testsrc2=size=320x180:rate=25:duration=${kSeconds}`, '-c:v', 'libx264',
    '-preset', 'ultrafast', '-g', '25', '-pix_fmt', 'yuv420p', below('source.mp4'));
  ffmpeg('-itsoffset', `${kStart}`, '-i', below('source.mp4'), '-i', recording, '-copyts', '-map', '0:v',
    '-map', '1:s', '-c', 'copy', '-muxdelay', '0', '-muxpreload', '0', '-mpegts_copyts', '1', '-f',
    'mpegts', below('recording.ts'));
}

// The video's segments keep the programme's clock, as those of packagers do: Shaka Player places text
// by the video's offset.
function makeVideo() {
  ffmpeg('-copyts', '-i', below('recording.ts'), '-map', '0:v', '-c', 'copy', '-f', 'hls', '-hls_time', '3',
    '-hls_playlist_type', 'vod', '-hls_segment_options', 'mpegts_copyts=1', below('video', 'v.m3u8'));
  ffmpeg('-i', below('source.mp4'), '-c', 'copy', '-f', 'dash', '-seg_duration', '3', '-use_template', '1',
    '-use_timeline', '1', below('video', 'v.mpd'));
  for (const name of readdirSync(below('video')).filter((one) => one.startsWith('chunk-'))) {
    const bytes = readFileSync(below('video', name));
    const at = bytes.indexOf('tfdt') + 8;
    bytes.writeBigUInt64BE(bytes.readBigUInt64BE(at) + BigInt(kStart * kTimescale), at);
    writeFileSync(below('video', name), bytes);
  }
  const codecs = readFileSync(below('video', 'v.mpd'), 'utf8').match(/codecs="(avc1[^"]*)"/)[1];
  writeFileSync(below('video', 'master.m3u8'),
    `#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1000000,CODECS="${codecs}",RESOLUTION=320x180\nv.m3u8\n`);
}

function makeSubtitles() {
  run(txsub, 'stream', below('recording.ts'), '-o', below('subtitles'), '--segment', '3', '--master',
    below('video', 'master.m3u8'));
  const sets = readFileSync(below('subtitles', 'adaptation-sets.xml'), 'utf8')
    .replaceAll('initialization="', 'initialization="subtitles/')
    .replaceAll('media="', 'media="subtitles/')
    .replaceAll('AdaptationSet id="', 'AdaptationSet id="1');
  const mpd = readFileSync(below('video', 'v.mpd'), 'utf8')
    .replaceAll(/(initialization|media)="/g, '$1="video/')
    .replace('startNumber="1"', `startNumber="1" presentationTimeOffset="${kStart * kTimescale}"`)
    .replace('<S t="0"', `<S t="${kStart * kTimescale}"`)
    .replace('</Period>', `${sets}</Period>`);
  writeFileSync(below('both.mpd'), mpd);
}

// What another reader finds in fragmented MP4: samples that follow each other from the first PTS on.
function readFragments(format, tag) {
  const folder = readdirSync(below('subtitles')).find((name) => name.includes(`page-${pageNumber}`));
  const names = readdirSync(below('subtitles', folder)).filter((name) => name.startsWith(`${format}-`));
  const numberOf = (name) => (name.endsWith('init.mp4') ? 0 : Number(name.match(/(\d+)\.m4s$/)[1]));
  names.sort((a, b) => numberOf(a) - numberOf(b));
  const file = below(`${format}.mp4`);
  writeFileSync(file, Buffer.concat(names.map((name) => readFileSync(below('subtitles', folder, name)))));
  const found = JSON.parse(run('ffprobe', '-v', 'error', '-of', 'json', '-show_streams', '-show_packets', file));
  if (found.streams[0].codec_tag_string !== tag) return `the codec is ${found.streams[0].codec_tag_string}`;
  const starts = new Set(found.packets.map((packet) => packet.pts));
  const isOrdered = found.packets.every((packet, i) => i === 0 || packet.pts > found.packets[i - 1].pts);
  let start = kStart * 90_000;
  for (const [, duration] of readFileSync(below('subtitles', folder, 'webvtt.m3u8'), 'utf8')
    .matchAll(/#EXTINF:([\d.]+)/g)) {
    if (!starts.has(start)) return `no sample begins with the segment at ${start}`;
    start += Math.round(Number(duration) * 90_000);
  }
  return isOrdered && found.packets[0].pts === kStart * 90_000 ? '' : 'samples are out of order';
}

// Both halves while the programme runs; comes back when there is enough to play.
async function startLive() {
  mkdirSync(below('live', 'video'), { recursive: true });
  writeFileSync(below('live', 'video', 'master.m3u8'), readFileSync(below('video', 'master.m3u8')));
  const options = { stdio: ['ignore', 'ignore', 'inherit'] };
  spawn(txsub, ['stream', below('recording.ts'), '-o', below('live', 'subtitles'), '--segment', '3',
    '--realtime', '--master', below('live', 'video', 'master.m3u8')], options);
  spawn('ffmpeg', ['-nostdin', '-v', 'error', '-re', '-copyts', '-i', below('recording.ts'), '-map', '0:v',
    '-c', 'copy', '-f', 'hls', '-hls_time', '3', '-hls_playlist_type', 'event', '-hls_segment_options',
    'mpegts_copyts=1', below('live', 'video', 'v.m3u8')], options);
  const isThere = (...name) => existsSync(below('live', ...name));
  for (let i = 0; i < 300; ++i) {
    if (isThere('video', 'v1.ts') && isThere('video', 'v.m3u8') && isThere('subtitles', 'master.m3u8')) return;
    await new Promise((done) => setTimeout(done, 100));
  }
}

makeRecording();
makeVideo();
makeSubtitles();
const liveRuns = ['hls.js', 'shaka'].map((player) => ({
  player, url: 'live/subtitles/master.m3u8', format: '',
}));
const runs = [
  { player: 'hls.js', url: 'subtitles/master.m3u8', format: '' },
  { player: 'shaka', url: 'subtitles/master.m3u8', format: '' },
  { player: 'shaka', url: 'both.mpd', format: 'stpp.ttml.im1t' },
  { player: 'shaka', url: 'both.mpd', format: 'wvtt' },
  { player: 'dash.js', url: 'both.mpd', format: 'stpp.ttml.im1t' },
  { player: 'dash.js', url: 'both.mpd', format: 'wvtt' },
];
const truth = readTruth();
const server = await serve();
const base = `http://127.0.0.1:${server.address().port}`;
const browser = await puppeteer.launch({
  executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
  headless: true,
  defaultViewport: { width: 1400, height: 1000 },
  args: ['--no-sandbox', '--disable-gpu', '--autoplay-policy=no-user-gesture-required',
    '--disable-dev-shm-usage'],
});
let failed = truth.length === 0 || runs.length === 0;
for (const [format, tag] of [['im1t', 'stpp'], ['wvtt', 'wvtt']]) {
  const fault = readFragments(format, tag);
  console.log(`ffprobe, ${format}: ${fault || 'as it should be'}`);
  failed ||= fault !== '';
}

async function playAll(page, all) {
  await Promise.all(all.map(async ({ player, url, format }, i) => {
    const frame = page.frames().find((one) => one.name() === `run${i}`);
    const result = await frame.evaluate(`play(${JSON.stringify(player)}, ${JSON.stringify(`${base}/${url}`)},
      ${JSON.stringify(language)}, ${JSON.stringify(format)}, ${kLongest})
      .catch((error) => ({ errors: [error.message ?? String(error)] }))`);
    const faults = result.outcome === 'ended' ? faultsOf(result.cues, truth, url.startsWith('live/') ? result.joined : 0)
      : [`${result.outcome ?? 'not played'}, at ${result.time} s`];
    faults.push(...result.errors);
    console.log(`${player}, ${url}${format ? `, ${format}` : ''}: ${
      faults.length ? faults.join('; ') : `${truth.length} cues as they should be`}${
        result.joined > 0.5 ? `, from ${result.joined.toFixed(1)} s on` : ''}`);
    failed ||= faults.length !== 0;
  }));
}

const page = await browser.newPage();
await page.goto(`${base}/pages/`);
await playAll(page, runs);
await startLive();
await page.goto(`${base}/pages/live`);
await playAll(page, liveRuns);
await browser.close();
server.close();
process.exit(failed ? 1 : 0);
