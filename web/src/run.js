// A recorded run: the file's nodes, moved to any time. Poses are told in the universe's frame: metres,
// z upwards, relative to the file's origin.
import { AnimationMixer, LoopOnce } from 'three';
import { GLTFLoader } from 'three/examples/jsm/loaders/GLTFLoader.js';

export class Run {
  /** @param {ArrayBuffer} bytes a binary glTF file of HyRecorder */
  static async read(bytes) {
    const gltf = await new GLTFLoader().parseAsync(bytes, '');
    const run = new Run();
    const json = gltf.parser.json;
    const extras = json.scenes[0].extras ?? {};
    run.scene = gltf.scene;
    run.origin = extras.origin ?? [0, 0, 0];
    run.duration = extras.duration ?? 0;
    run.nodes = await Promise.all(
      json.nodes.slice(1).map((_, i) => gltf.parser.getDependency('node', i + 1)));
    run.names = json.nodes.slice(1).map((node) => node.name);
    // The first material is that of what stands still.
    run.isStatic = json.nodes.slice(1).map(({ mesh }) =>
      mesh !== undefined && json.meshes[mesh].primitives[0].material === 0);
    run.forces = extras.forces ? await readForces(gltf.parser, extras.forces) : null;
    run.mixer = new AnimationMixer(gltf.scene);
    run.action = null;
    if (gltf.animations.length > 0) {
      run.action = run.mixer.clipAction(gltf.animations[0]);
      run.action.setLoop(LoopOnce);
      run.action.clampWhenFinished = true;
      run.action.play();
    }
    run.seek(0);
    return run;
  }

  /** Moves all nodes to a time in s, limited to the run. */
  seek(time) {
    this.time = Math.min(Math.max(Number.isFinite(time) ? time : 0, 0), this.duration);
    if (this.action) {
      this.action.paused = false;
      this.action.enabled = true;
      this.action.time = Math.min(this.time, this.action.getClip().duration);
      this.mixer.update(0);
    }
    for (const node of this.nodes) node.visible = node.scale.x > 0;
  }

  /** Pose of a node by index or name at the present time; null for one that is not there. */
  pose(which) {
    const index = typeof which === 'number' ? which : this.names.indexOf(which);
    const node = this.nodes[index];
    if (!node || !node.visible) return null;
    return { position: node.position.toArray(), quaternion: node.quaternion.toArray() };
  }
}

export const ForceKind = { contact: 0, joint: 1 };

/** Forces by sample: first index of each in one array of point, force and kind; times of the samples. */
async function readForces(parser, extras) {
  const data = await parser.getDependency('bufferView', extras.bufferView);
  const times = new Float64Array((await parser.getDependency('bufferView', extras.timesBufferView)).slice(0));
  const frames = new Uint32Array(data.slice(0));
  const values = new Float32Array(data.slice(0));
  const first = new Uint32Array(times.length + 1);
  const count = frames.length / 8;
  for (let i = 0; i < count; ++i) first[frames[8 * i] + 1] = i + 1;
  for (let s = 1; s <= times.length; ++s) first[s] = Math.max(first[s], first[s - 1]);
  const sizes = [[], []];
  for (let i = 0; i < count; ++i)
    sizes[values[8 * i + 7]].push(Math.hypot(values[8 * i + 4], values[8 * i + 5], values[8 * i + 6]));
  return {
    /** Of each kind the force that few exceed, N; 0 where there is none of it. */
    typical: sizes.map((list) => list.sort((a, b) => a - b)[Math.floor(0.95 * (list.length - 1))] ?? 0),
    most: Math.max(...Array.from(times, (_, s) => first[s + 1] - first[s])),
    /** Calls visit(point, force, kind) for each force of the sample at or before a time. */
    at(time, visit) {
      let low = 0, high = times.length - 1;
      while (low < high) {
        const middle = (low + high + 1) >> 1;
        if (times[middle] <= time + 1e-9) low = middle;
        else high = middle - 1;
      }
      for (let i = first[low]; i < first[low + 1]; ++i)
        visit(values.subarray(8 * i + 1, 8 * i + 4), values.subarray(8 * i + 4, 8 * i + 7), values[8 * i + 7]);
    },
  };
}
