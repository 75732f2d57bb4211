<?xml version="1.0" encoding="UTF-8"?>
<ColorCorrection xmlns="urn:ASC:CDL:v1.2" id="cool_night">
    <SOPNode>
        <Description>moonlight: darker, cooler, less colour</Description>
        <Slope>0.74 0.84 1.04</Slope>
        <Offset>0 0.006 0.022</Offset>
        <Power>1.28 1.2 1.08</Power>
    </SOPNode>
    <SatNode>
        <Saturation>0.72</Saturation>
    </SatNode>
</ColorCorrection>
