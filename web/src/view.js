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
const kFewThings = 20;
const kGroundRatio = 8; // of a ground's size to that of the things
const kFarthest = 60; // radii of a thing from which it is still seen
const kUp = new Vector3(0, 0, 1);
const kForceColours = [new Color('#d21f5b'), new Color('#1d4ed8')]; // by kind
const kArrowLength = 0.17; // of a typical force, in radii of the scene
const kLongestArrow = 2; // typical ones

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
    new ResizeObserver(() => this.resize()).observe(host);
    this.resize();
  }

  /** Sizes of the things, and bounds of where they move over the run. */
  measure() {
    const { run } = this;
    for (const node of run.nodes) node.userData.radius = this.measureNode(node);
    const radii = run.nodes.map((node) => node.userData.radius).filter((r) => r > 0).sort((a, b) => a - b);
    const large = kGroundRatio * (radii[Math.floor(radii.length / 2)] || 1);
    for (const [i, node] of run.nodes.entries())
      node.userData.isGround = run.isStatic[i] && (node.userData.radius > large || radii.length < 3);
    const things = run.nodes.filter((node) => !node.userData.isGround && node.userData.radius > 0);
    this.thingRadius = things.map((node) => node.userData.radius).sort((a, b) => a - b)[Math.floor(0.9 * things.length)] ?? 1;
    const places = this.placesOf(things);
    // A few that fly far away do not make all others small.
    const cut = things.length > kFewThings ? 0.03 : 0;
    const quantile = (axis, share) => {
      const sorted = places.map((place) => place.getComponent(axis)).sort((a, b) => a - b);
      return sorted[Math.round(share * (sorted.length - 1))] ?? 0;
    };
    const low = new Vector3(...[0, 1, 2].map((axis) => quantile(axis, cut)));
    const high = new Vector3(...[0, 1, 2].map((axis) => quantile(axis, 1 - cut)));
    this.bounds = new Box3(low.subScalar(this.thingRadius), high.addScalar(this.thingRadius));
    this.centre = this.bounds.getCenter(new Vector3());
    this.radius = Math.max(this.bounds.getSize(new Vector3()).length() / 2, 0.05);
  }

  /** Radius about a node's origin that holds its shapes, m. */
  measureNode(node) {
    let radius = 0;
    node.traverse((part) => {
      if (!part.isMesh) return;
      part.geometry.computeBoundingSphere();
      const { center, radius: r } = part.geometry.boundingSphere;
      radius = Math.max(radius, center.length() + r);
      part.castShadow = true;
      part.receiveShadow = true;
    });
    return radius;
  }

  placesOf(nodes) {
    const { run } = this;
    const start = run.time, places = [];
    for (let i = 0; i <= kSamplesOfBounds; ++i) {
      run.seek((run.duration * i) / kSamplesOfBounds);
      for (const node of nodes) if (node.visible) places.push(node.position.clone());
    }
    run.seek(start);
    return places;
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

  /** Shows the whole scene; where its things would be dots, one of them, with which the view goes. */
  frameAll() {
    const toWorld = (v) => this.root.localToWorld(v.clone());
    const isWide = this.radius > kFarthest * this.thingRadius;
    const radius = isWide ? (kFarthest / 4) * this.thingRadius : 1.1 * this.radius;
    const distance = radius / Math.sin((this.camera.fov / 2) * (Math.PI / 180));
    const target = isWide ? this.middleThing() : null;
    const centre = target ? target.position : this.centre;
    this.root.updateWorldMatrix(true, false);
    this.orbit.target.copy(toWorld(centre));
    this.camera.position.copy(
      toWorld(centre.clone().add(new Vector3(0.45, -1, 0.45).normalize().multiplyScalar(distance))));
    this.camera.near = distance / 1000;
    this.camera.far = distance * 200;
    this.camera.updateProjectionMatrix();
    this.orbit.update();
    this.onFollow?.(target ? this.run.nodes.indexOf(target) : -1);
  }

  /** The thing that is nearest to the middle of the present positions. */
  middleThing() {
    const things = this.run.nodes.filter((node) => node.visible && !node.userData.isGround);
    const middle = new Vector3();
    for (const { position } of things) middle.addScaledVector(position, 1 / things.length);
    return things.reduce((best, node) =>
      (node.position.distanceTo(middle) < best.position.distanceTo(middle) ? node : best));
  }

  addArrows() {
    const { forces } = this.run;
    this.shown = [false, false]; // by kind of force
    if (!forces || forces.most <= 0) return;
    const shaft = new CylinderGeometry(0.03, 0.03, 0.8, 8).translate(0, 0.4, 0);
    const tip = new ConeGeometry(0.09, 0.2, 12).translate(0, 0.9, 0);
    const arrow = mergeGeometries([shaft, tip]).rotateX(Math.PI / 2); // along +z, one long
    this.arrows = new InstancedMesh(arrow, new MeshBasicMaterial({ depthTest: false }), forces.most);
    this.arrows.renderOrder = 1; // joints lie inside of what they join
    this.arrows.frustumCulled = false;
    this.root.add(this.arrows);
  }

  hasForces(kind) {
    return (this.run.forces?.typical[kind] ?? 0) > 0;
  }

  showForces(kind, on) {
    this.shown[kind] = on;
  }

  updateArrows() {
    if (!this.arrows) return;
    const { forces } = this.run;
    const matrix = new Matrix4(), turn = new Quaternion(), scale = new Vector3();
    const at = new Vector3(), direction = new Vector3();
    const typicalLength = kArrowLength * this.radius;
    let count = 0;
    forces.at(this.run.time, (point, force, kind) => {
      const size = direction.fromArray(force).length();
      if (size === 0 || !this.shown[kind]) return;
      turn.setFromUnitVectors(kUp, direction.divideScalar(size));
      const length = typicalLength * Math.min(size / forces.typical[kind], kLongestArrow);
      scale.set(typicalLength, typicalLength, length);
      this.arrows.setMatrixAt(count, matrix.compose(at.fromArray(point), turn, scale));
      this.arrows.setColorAt(count++, kForceColours[kind]);
    });
    this.arrows.count = count;
    this.arrows.instanceMatrix.needsUpdate = true;
    if (this.arrows.instanceColor) this.arrows.instanceColor.needsUpdate = true;
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
