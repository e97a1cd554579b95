# A photograph in 256 learned colors, and in 16 with the error of each pixel spread.
import ombrilo

photo = ombrilo.Image.open("photo.jpg")
photo.copy().neuquant(8).save("learned.png")
photo.copy().dither(4).save("dithered.png")
