"""A tour of the ravelo Python package, in the order a notebook would take it.

Run it from the checkout after installing the package:

    python3 examples/python/tour.py
"""
import pathlib
import tempfile

import numpy as np

import ravelo

HERE = pathlib.Path(__file__).resolve().parent

# Build a small net by hand: rain and a sprinkler both wet the grass.
net = ravelo.Net("Lawn")
rain = net.add_node("Rain", ["yes", "no"])
sprinkler = net.add_node("Sprinkler", ["on", "off"], parents=[rain])
grass = net.add_node("Grass", ["wet", "dry"], parents=[sprinkler, rain])
rain.cpt = [0.2, 0.8]
sprinkler.cpt = [[0.01, 0.99],   # when it rains
                 [0.4, 0.6]]     # when it doesn't
# The table's axes are the parents in order (Sprinkler, Rain), then Grass itself.
grass.cpt = np.array([[[0.99, 0.01], [0.9, 0.1]],
                      [[0.8, 0.2], [0.0, 1.0]]])
print(net, grass.parents, grass.cpt.shape)

# Compile, observe wet grass, and ask why.
net.compile()
grass.finding = "wet"
print("P(rain | wet grass) =", round(float(rain.beliefs[0]), 4))
print("P(wet grass) =", round(net.findings_probability(), 4))
print("most probable explanation:", net.mpe())
print(net.beliefs())

# A finding the model rules out is refused, and the old findings stay.
sprinkler.finding = "off"
try:
    rain.finding = "no"
except ravelo.Error as error:
    print(f"refused (report {error.number}, {error.severity}): {error.message}")
print("findings kept:", net.findings)
net.retract()

# Soft evidence: a likelihood on the sprinkler.
sprinkler.likelihood = [0.7, 0.3]
print("P(rain | sprinkler likely on) =", round(float(rain.beliefs[0]), 4))

# Nets read and write every supported format.
with tempfile.TemporaryDirectory() as folder:
    for extension in ("dne", "bif", "xmlbif", "net"):
        path = pathlib.Path(folder) / f"lawn.{extension}"
        net.write(path)
        again = ravelo.read(path)
        assert [p.name for p in again["Grass"].parents] == ["Sprinkler", "Rain"]
        assert np.allclose(again["Grass"].cpt, grass.cpt)
    print("written and read back:", sorted(p.suffix for p in pathlib.Path(folder).iterdir()))

# A bigger net from the examples, with the whole picture in one table.
with ravelo.read(HERE.parent / "asia.dne") as asia:
    asia.compile()
    asia.findings = {"xray": "yes", "dysp": "yes"}
    frame = asia.beliefs()
    print(frame.loc[["tub", "lung", "bronc"]])
    print("edges:", sorted(asia.to_networkx().edges)[:3], "...")

# Cases: draw random cases from the lawn net, hide some values, and learn a fresh copy from them.
net.retract()
cases = net.simulate(2000, missing=0.1, seed=7)
print(cases.head())
fresh = net.copy("Relearned")
for node in fresh.nodes:
    node.cpt = None
fresh.learn(cases)
print("Rain learned:", fresh["Rain"].cpt.round(2), "log-likelihood of 100 cases:",
      round(net.log_likelihood(cases.head(100)), 2))

# Decisions: take the umbrella or not, given a forecast.
lawn_party = ravelo.Net("Party")
weather = lawn_party.add_node("Weather", ["rain", "dry"])
forecast = lawn_party.add_node("Forecast", ["wet", "fine"], parents=[weather])
umbrella = lawn_party.add_node("Umbrella", ["take", "leave"], parents=[forecast], kind="decision")
worth = lawn_party.add_node("Worth", 0, parents=[weather, umbrella], kind="utility")
weather.cpt = [0.3, 0.7]
forecast.cpt = [[0.8, 0.2], [0.1, 0.9]]
worth.func = [[70, 0], [20, 100]]
lawn_party.compile()
forecast.finding = "wet"
print("expected utilities of the umbrella:", dict(zip(umbrella.states, umbrella.expected_utils.round(2))))
