// The picture: light, ground, camera, labels and arrows.
import {
  Box3, Color, ConeGeometry, CylinderGeometry, DirectionalLight, GridHelper, Group, HemisphereLight,
  InstancedMesh, Matrix4, Mesh, MeshBasicMaterial, PCFSoftShadowMap, PerspectiveCamera, PlaneGeometry,
  Quaternion, Scene, ShadowMaterial, SRGBColorSpace, Vector3, WebGLRenderer, ACESFilmicToneMapping,
} from 'three';
import { OrbitControls } from 'three/examples/jsm/controls/OrbitControls.js';
import { mergeGeometries } from 'three/examples/jsm/utils/BufferGeometryUtils.js';

const kSky = new Color('#dfe7ee');
const kLabels = 60; // more are not readable
const kSamplesOfBounds = 40;
const kFarFlight = 100; // m
const kUp = new Vector3(0, 0, 1);

export class View {
  /** @param {HTMLElement} host @param {Run} run */
  constructor(host, run) {
    this.run = run;
    this.host = host;
    this.scene = new Scene();
    this.scene.background = kSky;
    this.scene.add(run.scene);
    // Everything of ours lives in the universe's frame, below the root that turns it.
    this.root = run.nodes[0]?.parent ?? run.scene;
    this.camera = new PerspectiveCamera(40, 1, 0.01, 1e5);
    this.renderer = new WebGLRenderer({ antialias: true, preserveDrawingBuffer: true });
    this.renderer.outputColorSpace = SRGBColorSpace;
    this.renderer.toneMapping = ACESFilmicToneMapping;
    this.renderer.shadowMap.enabled = true;
    this.renderer.shadowMap.type = PCFSoftShadowMap;
    this.renderer.setPixelRatio(Math.min(window.devicePixelRatio, 2));
    host.append(this.renderer.domElement);
    this.orbit = new OrbitControls(this.camera, this.renderer.domElement);
    this.orbit.addEventListener('change', () => this.onChange?.());
    this.labels = document.createElement('div');
    this.labels.className = 'labels';
    this.labels.hidden = true;
    host.append(this.labels);
    this.followed = -1;
    this.measure();
    this.light();
    this.addArrows();
    this.addLabels();
    this.frameAll();
    new ResizeObserver(() => this.resize()).observe(host);
    this.resize();
  }

  /** Bounds of what moves, over the run. */
  measure() {
    const { run } = this;
    const bounds = new Box3(), box = new Box3();
    for (const node of run.nodes) {
      let radius = 0;
      node.traverse((part) => {
        if (!part.isMesh) return;
        part.geometry.computeBoundingSphere();
        const { center, radius: r } = part.geometry.boundingSphere;
        radius = Math.max(radius, center.length() + r);
        part.castShadow = true;
        part.receiveShadow = true;
      });
      node.userData.radius = radius;
    }
    const radii = run.nodes.map((node) => node.userData.radius).filter((r) => r > 0).sort((a, b) => a - b);
    const large = 8 * (radii[Math.floor(radii.length / 2)] || 1);
    for (const node of run.nodes) node.userData.isGround = node.userData.radius > large;
    const start = run.time;
    for (let i = 0; i <= kSamplesOfBounds; ++i) {
      run.seek((run.duration * i) / kSamplesOfBounds);
      for (const node of run.nodes) {
        if (node.userData.isGround || !node.visible) continue;
        // Those who fly far away do not make the others small.
        node.userData.start ??= node.position.clone();
        if (node.position.distanceTo(node.userData.start) > kFarFlight) continue;
        const r = node.userData.radius;
        box.min.copy(node.position).addScalar(-r);
        box.max.copy(node.position).addScalar(r);
        bounds.union(box);
      }
    }
    run.seek(start);
    if (bounds.isEmpty()) bounds.set(new Vector3(-1, -1, -1), new Vector3(1, 1, 1));
    this.bounds = bounds;
    this.centre = bounds.getCenter(new Vector3());
    this.radius = Math.max(bounds.getSize(new Vector3()).length() / 2, 0.05);
  }

  light() {
    const { centre, radius } = this;
    const group = new Group();
    const sun = new DirectionalLight('#fff4e0', 2.6);
    sun.position.copy(centre).add(new Vector3(-0.6, -0.9, 1.6).multiplyScalar(2 * radius));
    sun.target.position.copy(centre);
    sun.castShadow = true;
    sun.shadow.mapSize.set(2048, 2048);
    sun.shadow.radius = 3;
    sun.shadow.bias = -2e-4;
    sun.shadow.normalBias = 0.004 * radius;
    const camera = sun.shadow.camera;
    camera.left = camera.bottom = -1.2 * radius;
    camera.right = camera.top = 1.2 * radius;
    camera.near = 0.1 * radius;
    camera.far = 8 * radius;
    group.add(sun, sun.target);
    this.root.add(group);
    this.scene.add(new HemisphereLight('#cfe0f2', '#8a8173', 1.6));
    const grounds = this.run.nodes.filter((node) => node.userData.isGround);
    const floor = grounds.length > 0 ? Math.max(...grounds.map((node) => node.position.z))
      : this.bounds.min.z;
    for (const ground of grounds) this.paint(ground, '#e6e2da');
    if (grounds.length === 0) this.addShadowCatcher(floor);
    this.addGrid(floor);
  }

  /** Gives the ground a colour of its own, so that what stands on it is seen. */
  paint(node, colour) {
    node.traverse((part) => {
      if (!part.isMesh) return;
      part.material = part.material.clone();
      part.material.color.set(colour);
      part.material.roughness = 0.95;
      part.castShadow = false;
    });
  }

  addShadowCatcher(floor) {
    const catcher = new Mesh(new PlaneGeometry(20 * this.radius, 20 * this.radius),
      new ShadowMaterial({ opacity: 0.2 }));
    catcher.position.set(this.centre.x, this.centre.y, floor);
    catcher.receiveShadow = true;
    this.root.add(catcher);
  }

  /** Lines of the x-y plane, 1, 10, 100 ... m apart as the scene's size asks. */
  addGrid(floor) {
    const cell = 10 ** Math.floor(Math.log10(this.radius));
    const grid = new GridHelper(cell * 40, 40, '#6b7680', '#8d98a1');
    grid.rotation.x = Math.PI / 2; // from the x-z plane
    grid.position.set(Math.round(this.centre.x / cell) * cell,
      Math.round(this.centre.y / cell) * cell, floor + 0.002 * this.radius);
    grid.material.transparent = true;
    grid.material.opacity = 0.3;
    this.root.add(grid);
  }

  frameAll() {
    const distance = this.radius / Math.sin((this.camera.fov / 2) * (Math.PI / 180));
    const toWorld = (v) => this.root.localToWorld(v.clone());
    this.root.updateWorldMatrix(true, false);
    this.orbit.target.copy(toWorld(this.centre));
    this.camera.position.copy(
      toWorld(this.centre.clone().add(new Vector3(0.45, -1, 0.45).normalize().multiplyScalar(distance))));
    this.camera.near = distance / 1000;
    this.camera.far = distance * 100;
    this.camera.updateProjectionMatrix();
    this.orbit.update();
  }

  addArrows() {
    const { contacts } = this.run;
    if (!contacts || contacts.most <= 0) return;
    const shaft = new CylinderGeometry(0.03, 0.03, 0.8, 8).translate(0, 0.4, 0);
    const tip = new ConeGeometry(0.09, 0.2, 12).translate(0, 0.9, 0);
    const arrow = mergeGeometries([shaft, tip]).rotateX(Math.PI / 2); // along +z, one long
    this.arrows = new InstancedMesh(arrow, new MeshBasicMaterial({ color: '#d21f5b' }), contacts.most);
    this.arrows.frustumCulled = false;
    this.arrows.visible = false;
    this.root.add(this.arrows);
  }

  updateArrows() {
    if (!this.arrows?.visible) return;
    const { contacts } = this.run;
    const matrix = new Matrix4(), turn = new Quaternion(), scale = new Vector3();
    const at = new Vector3(), direction = new Vector3();
    const longest = 0.35 * this.radius;
    let count = 0;
    contacts.at(this.run.time, (point, force) => {
      direction.fromArray(force);
      const size = direction.length();
      if (size === 0) return;
      const length = longest * Math.min(size / contacts.typicalForce, 2) / 2;
      turn.setFromUnitVectors(kUp, direction.divideScalar(size));
      scale.set(longest / 2, longest / 2, length);
      this.arrows.setMatrixAt(count++, matrix.compose(at.fromArray(point), turn, scale));
    });
    this.arrows.count = count;
    this.arrows.instanceMatrix.needsUpdate = true;
  }

  addLabels() {
    this.run.names.slice(0, kLabels).forEach((name) => {
      const label = document.createElement('span');
      label.textContent = name;
      this.labels.append(label);
    });
  }

  updateLabels() {
    if (this.labels.hidden) return;
    const at = new Vector3();
    [...this.labels.children].forEach((label, i) => {
      const node = this.run.nodes[i];
      node.getWorldPosition(at).project(this.camera);
      label.hidden = !node.visible || node.userData.isGround || at.z > 1 || at.z < -1;
      label.style.left = `${(50 * (1 + at.x)).toFixed(2)}%`;
      label.style.top = `${(50 * (1 - at.y)).toFixed(2)}%`;
    });
  }

  /** Lets the camera go with a node; -1 lets it rest. */
  follow(index) {
    this.followed = index;
    this.lastFollowed = null;
  }

  updateFollowed() {
    const node = this.run.nodes[this.followed];
    if (!node?.visible) return;
    const at = node.getWorldPosition(new Vector3());
    if (this.lastFollowed) {
      const moved = at.clone().sub(this.lastFollowed);
      this.camera.position.add(moved);
      this.orbit.target.add(moved);
    } else {
      this.camera.position.add(at.clone().sub(this.orbit.target));
      this.orbit.target.copy(at);
    }
    this.lastFollowed = at;
    this.orbit.update();
  }

  resize() {
    const { clientWidth: width, clientHeight: height } = this.host;
    if (width === 0 || height === 0) return;
    this.renderer.setSize(width, height);
    this.camera.aspect = width / height;
    this.camera.updateProjectionMatrix();
    this.onChange?.();
  }

  draw() {
    this.scene.updateMatrixWorld();
    this.updateFollowed();
    this.updateArrows();
    this.renderer.render(this.scene, this.camera);
    this.updateLabels();
  }
}
