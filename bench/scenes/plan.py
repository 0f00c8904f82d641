"""What is run: the variants of each scene, and the goals."""

# Scene: the variants of Halcyr, then those of the others as (program, variant).
PLAN = {
    "pyramid": (["default", "iter", "iter30", "iter/sub4", "sweep30/sub2"],
                [("bullet", "default"), ("bullet", "default/sub4"), ("bullet64", "default/sub4"),
                 ("ode", "quick/sub4")]),
    "heap": (["iter", "sweep", "sweep/sub2"],
             [("bullet", "default"), ("bullet", "default/sub4"), ("ode", "quick/sub4")]),
    "tower": (["default"], [("bullet", "default"), ("bullet", "default/sub4"), ("ode", "default")]),
    "six": (["default", "sweep"], [("bullet", "default"), ("ode", "default"), ("ode", "quick")]),
    "scale1k": (["default", "sweep", "sweep/sub2"], [("bullet", "default"), ("bullet64", "default"),
                                      ("ode", "quick")]),
    "scale5k": (["default", "sweep"], [("bullet", "default")]),
    "scale10k": (["default", "sweep"], [("bullet", "default")]),
    "wall10k": (["iter"], [("bullet", "default"), ("bullet", "default/sub4")]),
    "rolling": (["default", "aimed", "aimed/sub4"],
                [("bullet", "default"), ("bullet64", "default"), ("ode", "default")]),
    "slide": (["default", "aimed", "aimed/sub4"],
              [("bullet", "default"), ("bullet", "f2"), ("bullet64", "default"),
               ("ode", "default")]),
    "bounce": (["default", "calm", "calm/sub4"],
               [("bullet", "default"), ("ode", "default"), ("ode", "default/sub4")]),
    "tumble": (["default", "default/sub16"],
               [("bullet64", "default"), ("bullet64", "default/sub16"), ("ode", "default"),
                ("ode", "default/sub16")]),
    "pendulum": (["default", "exact", "exact/sub2", "exact/sub4"],
                 [("bullet64", "default"), ("bullet64", "mb"), ("bullet64", "mb/sub16"),
                  ("ode", "default"), ("ode", "exact"), ("ode", "exact/sub4"),
                  ("ode", "default/sub16")]),
    "chain100": (["default", "stiff", "stiff/sub4"],
                 [("bullet64", "mb/sub16"), ("bullet", "mb/sub16"), ("ode", "default/sub16")]),
    "chain1000": (["default", "stiff", "stiff/sub4"],
                  [("bullet64", "mb/sub16"), ("bullet", "mb/sub16")]),
    "crane": (["default", "stiff"],
              [("bullet64", "mb/sub64"), ("bullet", "mb/sub64"), ("ode", "default/sub64")]),
    "net": (["default", "stiff", "stiff/sub4"], [("bullet", "default"), ("bullet", "default/sub16")]),
    "ragdolls": (["default", "sweep", "default/sub4"],
                 [("bullet", "default"), ("bullet", "mb"), ("ode", "default"),
                  ("ode", "default/sub4")]),
    "vehicle": (["default"], [("bullet64", "mb"), ("bullet", "mb"), ("ode", "default")]),
    "fourbar": (["default", "exact", "exact/sub2"],
                [("bullet", "default"), ("ode", "default"), ("ode", "exact"), ("ode", "default/sub4"),
                 ("ode", "exact/sub4")]),
    "grasp": (["default"], [("bullet", "default"), ("bullet", "f2"), ("ode", "default"),
                            ("ode", "quick")]),
    "bridge": (["default", "stiff", "default/sub4", "stiff/sub4"],
               [("bullet", "default/sub4"), ("ode", "default"), ("ode", "default/sub4")]),
    "broad": (["default"], [("bullet", "default"), ("ode", "default"), ("ode", "hash")]),
    "rays": (["default"], [("bullet", "default"), ("bullet64", "default"), ("ode", "default")]),
}

# Wall time that a run may take where the usual one would cut what should be seen to its end, s.
CAP = 16
CAPS = {"wall10k": 50, "heap": 45, "ragdolls": 50}

# Scene: most of the time of one variant of another engine, and what must hold besides.
GOALS = {
    "pyramid": (1, "bullet default/sub4", {"moved_max": 3e-3}),
    "tower": (4, "bullet default", {"moved_max": 1e-3}),
    "heap": (1, "bullet default", {"pen_end": 5e-3}),
    "six": (1, "ode default", {"pen_end": 5e-3}),
    "scale1k": (1, "bullet default", {"pen_end": 5e-3}),
    "scale5k": (1, "bullet default", {"pen_end": 5e-3}),
    "scale10k": (1, "bullet default", {"pen_end": 5e-3}),
    "wall10k": (2, "bullet default", {"moved_max": 0.05}),
    "chain100": (0.3, "bullet64 mb/sub16", {"poserr_max": 0.05}),
    "chain1000": (0.3, "bullet64 mb/sub16", {"poserr_max": 0.05}),
    "crane": (0.1, "bullet64 mb/sub64", {"poserr_max": 0.05, "drift_max": 1e-3}),
    "net": (10, "bullet default", {"drift_max": 1e-3, "poserr_max": 0.05}),
    "bridge": (0.5, "ode default/sub4", {"drift_max": 1e-3}),
    "fourbar": (1, "ode default/sub4", {"drift_max": 1e-4}),
    "ragdolls": (1, "bullet mb", {"drift_late": 1e-3, "limit_deg": 2}),
    "vehicle": (1, "bullet64 mb", {"speed_err_rel": 0.01, "lateral_m": 0.01}),
    "grasp": (1, "ode quick", {"slip_rate_mm_s": 1}),
    "broad": (0.5, "ode default", {"missed": 0.5}),
    "rays": (0.1, "bullet default", {"wrong": 0.5}),
}

# Family: (scenes, steps, variant of Halcyr, variant of another engine or none).
GROWTH = {
    "scale": (["scale1000", "scale2000", "scale5000", "scale10000"], 120, "sweep",
              ("bullet", "default")),
    "chain": (["chain10", "chain30", "chain100", "chain300", "chain1000", "chain3000",
               "chain10000"], 60, "stiff", ("bullet64", "mb")),
    "pile": (["pile100", "pile300", "pile1000", "pile3000"], 240, "sweep", ("bullet", "default")),
    "pile, direct": (["pile30", "pile100", "pile200"], 240, "default", None),
}

# The measures shown in the table, where a scene has them.
SHOWN = ["moved_max", "drift_late", "drift_max", "poserr_max", "pen_late", "pen_end", "limit_deg",
         "dist_err_m", "speed_err_rel", "angle_max_rad", "E_max_rel", "E_gain_rel", "E_change_rel",
         "L_err_rel", "slip_rate_mm_s", "crank_err_rad", "lost", "missed", "wrong", "max_dist_err_m",
         "n_fallbacks_total"]
