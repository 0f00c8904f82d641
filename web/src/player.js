// Plays the run that the page holds.
import { Plots } from './plots.js';
import { ForceKind, Run } from './run.js';
import { View } from './view.js';

const kStep = 1 / 60; // s, of the step keys
const kSpeeds = [0.05, 0.1, 0.25, 0.5, 1, 2, 4];
const byId = (id) => document.getElementById(id);

async function runBytes() {
  const held = byId('run');
  if (!held.dataset.src) {
    const text = atob(held.textContent.trim());
    return Uint8Array.from(text, (c) => c.charCodeAt(0)).buffer;
  }
  return (await fetch(held.dataset.src)).arrayBuffer();
}

class Player {
  constructor(run) {
    this.run = run;
    this.isPlaying = false;
    this.speed = 1;
    try {
      this.view = new View(byId('view'), run);
      this.view.onChange = () => this.wantPicture();
      this.view.onFollow = (index) => this.follow(index);
    } catch (error) {
      byId('notice').textContent = `No picture: ${error.message}`;
      byId('notice').hidden = false;
    }
    const table = byId('table').textContent;
    if (table.trim()) this.plots = new Plots(byId('plots'), table, (time) => this.seek(time));
    else byId('plots').hidden = true;
    this.fillControls();
    this.bindKeys();
    this.seek(0);
    this.view?.frameAll();
  }

  seek(time) {
    this.run.seek(time);
    byId('slider').value = this.run.time;
    byId('time').textContent = `${this.run.time.toFixed(2)} / ${this.run.duration.toFixed(2)} s`;
    this.plots?.seek(this.run.time);
    this.wantPicture();
  }

  wantPicture() {
    if (this.isAsked) return;
    this.isAsked = true;
    requestAnimationFrame((now) => {
      this.isAsked = false;
      if (this.isPlaying) this.advance(now);
      this.view?.draw();
    });
  }

  advance(now) {
    const passed = this.lastPicture === undefined ? 0 : (now - this.lastPicture) / 1000;
    this.lastPicture = now;
    this.seek(this.run.time + passed * this.speed);
    if (this.run.time >= this.run.duration) this.play(false);
  }

  play(on) {
    if (on && this.run.time >= this.run.duration) this.seek(0);
    this.isPlaying = on;
    this.lastPicture = undefined;
    byId('play').textContent = on ? 'Pause' : 'Play';
    this.wantPicture();
  }

  step(seconds) {
    this.play(false);
    this.seek(this.run.time + seconds);
  }

  setSpeed(speed) {
    this.speed = speed;
    byId('speed').value = String(speed);
  }

  follow(index) {
    byId('follow').value = String(index);
    this.view?.follow(index);
    this.wantPicture();
  }

  toggle(id) {
    const box = byId(id);
    if (box.disabled) return;
    box.checked = !box.checked;
    box.dispatchEvent(new Event('change'));
  }

  fillControls() {
    const slider = byId('slider');
    slider.max = this.run.duration;
    slider.step = 'any';
    slider.addEventListener('input', () => { this.play(false); this.seek(Number(slider.value)); });
    byId('play').addEventListener('click', () => this.play(!this.isPlaying));
    byId('back').addEventListener('click', () => this.step(-kStep));
    byId('forward').addEventListener('click', () => this.step(kStep));
    byId('reset').addEventListener('click', () => { this.view?.frameAll(); this.wantPicture(); });
    for (const speed of kSpeeds) byId('speed').add(new Option(`${speed} ×`, String(speed)));
    byId('speed').addEventListener('change', (event) => this.setSpeed(Number(event.target.value)));
    this.setSpeed(1);
    byId('follow').add(new Option('follow nothing', '-1'));
    this.run.names.forEach((name, i) => byId('follow').add(new Option(name, String(i))));
    byId('follow').addEventListener('change', (event) => this.follow(Number(event.target.value)));
    byId('labels').addEventListener('change', (event) => {
      if (this.view) this.view.labels.hidden = !event.target.checked;
      this.wantPicture();
    });
    for (const [id, kind] of [['contacts', ForceKind.contact], ['joints', ForceKind.joint]]) {
      byId(id).disabled = !this.view?.hasForces(kind);
      byId(id).addEventListener('change', (event) => {
        this.view.showForces(kind, event.target.checked);
        this.wantPicture();
      });
    }
    byId('licences').addEventListener('click', () => byId('licence-texts').showModal());
  }

  bindKeys() {
    const speedBy = (places) => {
      const at = kSpeeds.indexOf(this.speed) + places;
      this.setSpeed(kSpeeds[Math.min(Math.max(at, 0), kSpeeds.length - 1)]);
    };
    const keys = {
      ' ': () => this.play(!this.isPlaying),
      k: () => this.play(!this.isPlaying),
      ArrowLeft: (event) => this.step(event.shiftKey ? -1 : -kStep),
      ArrowRight: (event) => this.step(event.shiftKey ? 1 : kStep),
      Home: () => this.step(-this.run.duration),
      End: () => this.step(this.run.duration),
      '+': () => speedBy(1),
      '-': () => speedBy(-1),
      l: () => this.toggle('labels'),
      c: () => this.toggle('contacts'),
      j: () => this.toggle('joints'),
      r: () => byId('reset').click(),
      f: () => this.follow((Number(byId('follow').value) + 2) % (this.run.names.length + 1) - 1),
    };
    window.addEventListener('keydown', (event) => {
      const isTyping = event.target.matches?.('select, input:not([type=range]):not([type=checkbox]), dialog *');
      const act = keys[event.key];
      if (!act || isTyping || event.ctrlKey || event.metaKey || event.altKey) return;
      event.preventDefault();
      act(event);
    });
  }
}

const run = await Run.read(await runBytes());
const player = new Player(run);
/** For scripts: seek(s), pose(name or index), duration in s, names, origin in m, draw(). */
window.halcyr = {
  seek: (time) => player.seek(time),
  pose: (which) => run.pose(which),
  duration: run.duration,
  names: run.names,
  origin: run.origin,
  draw: () => player.view?.draw(),
};
document.body.dataset.ready = 'true';
